#compdef tvp-register
# SPDX-License-Identifier: Apache-2.0
_arguments \
  '(--sfcb)--pegasus[the object manager is OpenPegasus]' \
  '(--pegasus)--sfcb[the object manager is SFCB]' \
  '--remove[unregister the provider]' \
  '--dry-run[print the steps without changing anything]' \
  '--provider-dir[the directory of providers]:directory:_directories' \
  '--cim-schema[the standard CIM schema]:directory:_directories' \
  '--help[show the options]' \
  '--version[show the version]'
