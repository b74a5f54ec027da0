#include "velmaro/util/string_format.h"

#include <cctype>
#include <cmath>
#include <cstdio>

#include <boost/json/serialize.hpp>

namespace velmaro {

std::string Describe::of(const boost::json::value& v) {
  if (v.is_string()) return std::string(v.get_string());
  if (v.is_null()) return "(null)";
  return boost::json::serialize(v);
}

std::string StringFormat::apply(std::string_view format, const std::vector<Argument>& args) {
  std::string out;
  out.reserve(format.size() + 32);
  std::size_t next = 0;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%' || i + 1 >= format.size()) {
      out += format[i];
      continue;
    }
    if (format[i + 1] == '%') {
      out += '%';
      ++i;
      continue;
    }
    // Precision (".1") and length modifiers ("l", "ll") before the conversion.
    std::size_t j = i + 1;
    int precision = -1;
    if (format[j] == '.') {
      precision = 0;
      ++j;
      while (j < format.size() && std::isdigit(static_cast<unsigned char>(format[j])) != 0) {
        precision = precision * 10 + (format[j] - '0');
        ++j;
      }
    }
    while (j < format.size() && (format[j] == 'l' || format[j] == 'h' || format[j] == 'z')) ++j;
    if (j >= format.size() || next >= args.size()) {
      out += format[i];
      continue;
    }
    const Argument& arg = args[next];
    const char conversion = format[j];
    switch (conversion) {
      case '@':
      case 's':
        out += arg.text;
        break;
      case 'd':
      case 'i':
      case 'u':
        out +=
            arg.number ? std::to_string(static_cast<long long>(std::trunc(*arg.number))) : arg.text;
        break;
      case 'f': {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.*Lf", precision < 0 ? 6 : precision,
                      arg.number.value_or(0));
        out += buffer;
        break;
      }
      case 'c':
        out += arg.number ? std::string(1, static_cast<char>(*arg.number)) : arg.text.substr(0, 1);
        break;
      default:  // not a conversion we know: copy it as written
        out.append(format.substr(i, j - i + 1));
        i = j;
        continue;
    }
    ++next;
    i = j;
  }
  return out;
}

}  // namespace velmaro
