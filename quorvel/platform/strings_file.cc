#include "quorvel/platform/strings_file.h"

#include <optional>

#include "quorvel/platform/utf16.h"

namespace quorvel::platform {
namespace {

bool isBareChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.' || c == '-' || c == '$' || c == ':' || c == '/';
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The text as UTF-8: a UTF-8 BOM is dropped, UTF-16 with a BOM is converted.
std::optional<std::string> decode(std::string_view bytes) {
  const auto starts = [&](std::string_view bom) { return bytes.substr(0, bom.size()) == bom; };
  if (starts("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  const bool littleEndian = starts("\xFF\xFE");
  if (littleEndian || starts("\xFE\xFF")) {
    if (bytes.size() % 2 != 0) return std::nullopt;
    std::u16string units;
    units.reserve(bytes.size() / 2 - 1);
    for (size_t i = 2; i + 1 < bytes.size(); i += 2) {
      const auto first = static_cast<unsigned char>(bytes[i]);
      const auto second = static_cast<unsigned char>(bytes[i + 1]);
      units += static_cast<char16_t>(littleEndian ? first | (second << 8) : (first << 8) | second);
    }
    return Utf16::toUtf8(units);
  }
  if (!Utf16::isValidUtf8(bytes)) return std::nullopt;
  return std::string(bytes);
}

// A recursive-descent reader over the decoded text; the first fault stops it.
class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  Result<std::map<std::string, std::string>> run() {
    std::map<std::string, std::string> table;
    while (skipSpaceAndComments() && !atEnd()) {
      auto key = readString("a key");
      if (!key) return fault_;
      if (!skipSpaceAndComments()) return fault_;
      std::string value = *key;
      if (peek() == '=') {
        ++pos_;
        if (!skipSpaceAndComments()) return fault_;
        auto read = readString("a value");
        if (!read) return fault_;
        value = std::move(*read);
        if (!skipSpaceAndComments()) return fault_;
      }
      if (peek() != ';') {
        fail("expected ';' after the entry for \"" + *key + "\"");
        return fault_;
      }
      ++pos_;
      table[std::move(*key)] = std::move(value);
    }
    if (faulted_) return fault_;
    return table;
  }

 private:
  bool atEnd() const { return pos_ >= text_.size(); }
  char peek() const { return atEnd() ? '\0' : text_[pos_]; }

  int lineAt(size_t pos) const {
    int line = 1;
    for (size_t i = 0; i < pos && i < text_.size(); ++i) line += text_[i] == '\n';
    return line;
  }

  std::nullopt_t fail(const std::string& what, std::optional<size_t> at = std::nullopt) {
    faulted_ = true;
    fault_ = Error::withDescription(StringsFile::kErrorDomain, StringsFile::kMalformed,
                                    "Malformed strings file at line " +
                                        std::to_string(lineAt(at.value_or(pos_))) + ": " + what);
    return std::nullopt;
  }

  // False (with the fault set) for an unterminated block comment.
  bool skipSpaceAndComments() {
    while (!atEnd()) {
      const char c = text_[pos_];
      if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v') {
        ++pos_;
      } else if (text_.substr(pos_, 2) == "//") {
        const auto end = text_.find('\n', pos_);
        pos_ = end == std::string_view::npos ? text_.size() : end + 1;
      } else if (text_.substr(pos_, 2) == "/*") {
        const auto end = text_.find("*/", pos_ + 2);
        if (end == std::string_view::npos) {
          fail("unterminated comment");
          return false;
        }
        pos_ = end + 2;
      } else {
        break;
      }
    }
    return true;
  }

  std::optional<std::string> readString(const char* what) {
    if (peek() == '"') return readQuoted();
    const auto start = pos_;
    while (!atEnd() && isBareChar(text_[pos_])) ++pos_;
    if (pos_ == start) {
      return atEnd() ? fail(std::string("expected ") + what + ", found the end of the file")
                     : fail(std::string("expected ") + what + ", found '" + text_[pos_] + "'");
    }
    return std::string(text_.substr(start, pos_ - start));
  }

  std::optional<std::string> readQuoted() {
    const auto start = pos_++;
    std::u16string pendingUnits;  // \u escapes, joined so surrogate pairs combine
    std::string out;
    const auto flushUnits = [&] {
      if (pendingUnits.empty()) return;
      out += Utf16::toUtf8(pendingUnits);
      pendingUnits.clear();
    };
    while (!atEnd()) {
      const char c = text_[pos_++];
      if (c == '"') {
        flushUnits();
        return out;
      }
      if (c != '\\') {
        flushUnits();
        out += c;
        continue;
      }
      if (atEnd()) break;
      const char e = text_[pos_++];
      if (e == 'u' || e == 'U') {
        auto unit = readHex4();
        if (!unit) return fail("bad \\u escape");
        pendingUnits += static_cast<char16_t>(*unit);
        continue;
      }
      flushUnits();
      out += unescape(e);
    }
    return fail("unterminated string", start);
  }

  std::optional<int> readHex4() {
    if (pos_ + 4 > text_.size()) return std::nullopt;
    int value = 0;
    for (int i = 0; i < 4; ++i) {
      const int digit = hexValue(text_[pos_ + static_cast<size_t>(i)]);
      if (digit < 0) return std::nullopt;
      value = value * 16 + digit;
    }
    pos_ += 4;
    return value;
  }

  static char unescape(char e) {
    switch (e) {
      case 'n':
        return '\n';
      case 't':
        return '\t';
      case 'r':
        return '\r';
      case 'a':
        return '\a';
      case 'b':
        return '\b';
      case 'f':
        return '\f';
      case 'v':
        return '\v';
      default:  // \" \\ \' and any other character stand for themselves
        return e;
    }
  }

  std::string_view text_;
  size_t pos_ = 0;
  bool faulted_ = false;
  Error fault_;
};

}  // namespace

Result<std::map<std::string, std::string>> StringsFile::parse(std::string_view bytes) {
  const auto text = decode(bytes);
  if (!text) {
    return Error::withDescription(kErrorDomain, kBadEncoding,
                                  "The strings file is neither UTF-8 nor UTF-16 with a BOM.");
  }
  return Parser(*text).run();
}

}  // namespace quorvel::platform
