// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Formatter.h"

#include "host/tvpcim/output/JsonFormatter.h"
#include "host/tvpcim/output/MofFormatter.h"
#include "host/tvpcim/output/TableFormatter.h"

namespace tvp::host::tvpcim {

std::unique_ptr<const Formatter> Formatter::make(const Options& options, const Terminal& terminal) {
  switch (options.form) {
  case Form::Json:
    return makeJsonFormatter();
  case Form::Mof:
    return makeMofFormatter();
  case Form::Table:
    break;
  }
  return std::make_unique<TableFormatter>(terminal, options.wide);
}

}  // namespace tvp::host::tvpcim
