#include "host/tvpcim/Formatter.h"

#include "host/tvpcim/JsonFormatter.h"
#include "host/tvpcim/MofFormatter.h"
#include "host/tvpcim/TableFormatter.h"

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
