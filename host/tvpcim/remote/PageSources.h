// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_PAGESOURCES_H
#define HOST_TVPCIM_REMOTE_PAGESOURCES_H

#include <string_view>

namespace tvp::host::tvpcim {

/** The files of remote/page: the document, with marks where the others belong, the style and the script. */
extern const std::string_view PAGE_HTML;
extern const std::string_view PAGE_CSS;
extern const std::string_view PAGE_JS;

}  // namespace tvp::host::tvpcim

#endif
