#compdef tvp-register
# SPDX-License-Identifier: Apache-2.0
_arguments \
  '(--sfcb)--pegasus[the object manager is OpenPegasus]' \
  '(--pegasus)--sfcb[the object manager is SFCB]' \
  '--remove[take the provider out of the object manager]' \
  '--dry-run[print the steps, change nothing]' \
  '--provider-dir[the folder of providers]:folder:_directories' \
  '--cim-schema[the standard CIM schema]:folder:_directories' \
  '--help[show the options]' \
  '--version[show the version]'
