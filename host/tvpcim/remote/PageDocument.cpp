// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/PageDocument.h"

#include "host/tvpcim/remote/PageSources.h"

#include <openssl/evp.h>

#include <array>
#include <string_view>

namespace tvp::host::tvpcim {
namespace {

/** Puts a text in the place of a mark. */
void fill(std::string& document, std::string_view mark, std::string_view text) {
  document.replace(document.find(mark), mark.size(), text);
}

/** How a policy names a script or a style: by its SHA-256. */
std::string sourceOf(std::string_view text) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  EVP_Digest(text.data(), text.size(), digest.data(), &size, EVP_sha256(), nullptr);
  std::array<unsigned char, std::size_t{2} * EVP_MAX_MD_SIZE> base64{};
  const int length = EVP_EncodeBlock(base64.data(), digest.data(), static_cast<int>(size));
  return "'sha256-" + std::string(base64.begin(), base64.begin() + length) + "'";
}

}  // namespace

PageDocument::PageDocument() : m_text(PAGE_HTML) {
  fill(m_text, "/*page.css*/", PAGE_CSS);
  fill(m_text, "/*page.js*/", PAGE_JS);
  m_policy =
      "default-src 'none'; script-src " + sourceOf(PAGE_JS) + "; style-src " + sourceOf(PAGE_CSS) +
      "; img-src data:; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

}  // namespace tvp::host::tvpcim
