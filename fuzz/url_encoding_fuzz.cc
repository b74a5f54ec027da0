// URL text from hostile bytes. The first byte picks the character set; the
// rest is the text. Escaping keeps only legal bytes and decodes back to the
// text; an escaped segment or query placed in a URL makes a valid URL whose
// last path component (decoded) or query (as written) is what was put in;
// and any text that makes a URL splits without fault.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>

#include "quorvel/platform/url.h"
#include "quorvel/platform/url_encoding.h"

namespace {

using quorvel::platform::Url;
using quorvel::platform::UrlEncoding;
using Set = UrlEncoding::CharacterSet;

constexpr Set kSets[] = {Set::urlQueryAllowed,       Set::urlFragmentAllowed, Set::urlPathAllowed,
                         Set::urlPathSegmentAllowed, Set::urlHostAllowed,     Set::urlUserAllowed};

int upperHex(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The text `escaped` stands for; aborts on a byte that should have been
// escaped or an escape that is not %XX with upper-case hex.
std::string decodeStrict(std::string_view escaped) {
  std::string out;
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const auto byte = static_cast<unsigned char>(escaped[i]);
    if (!UrlEncoding::isLegalInUrl(byte)) std::abort();
    if (byte != '%') {
      out += escaped[i];
      continue;
    }
    if (i + 2 >= escaped.size()) std::abort();
    const int hi = upperHex(escaped[i + 1]);
    const int lo = upperHex(escaped[i + 2]);
    if (hi < 0 || lo < 0) std::abort();
    out += static_cast<char>(hi * 16 + lo);
    i += 2;
  }
  return out;
}

void checkEscaping(std::string_view text, Set set) {
  const auto escaped = UrlEncoding::encode(text, set);
  if (decodeStrict(escaped) != text) std::abort();
  if (set == Set::urlPathSegmentAllowed && !text.empty()) {
    const auto url = Url::make("https://example.test/a/" + escaped);
    if (!url || url->lastPathComponent() != text) std::abort();
  }
  if (set == Set::urlQueryAllowed) {
    const auto url = Url::make("https://example.test/a?" + escaped);
    if (!url || url->query() != escaped) std::abort();
  }
  for (const char c : UrlEncoding::legacyEscape(text)) {
    if (!UrlEncoding::isLegalInUrl(static_cast<unsigned char>(c))) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Set set = kSets[data[0] % std::size(kSets)];
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  checkEscaping(text, set);
  if (const auto url = Url::make(text)) {
    (void)url->pathComponents();
    (void)url->lastPathComponent();
  }
  return 0;
}
