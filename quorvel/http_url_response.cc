#include "quorvel/http_url_response.h"

#include <algorithm>
#include <cctype>

#include <curl/curl.h>

namespace quorvel {
namespace {

char lower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool isAbsoluteHttpUrl(const std::string& url) {
  CURLU* parsed = curl_url();
  if (parsed == nullptr) return false;
  bool ok = curl_url_set(parsed, CURLUPART_URL, url.c_str(), 0) == CURLUE_OK;
  char* scheme = nullptr;
  char* host = nullptr;
  ok = ok && curl_url_get(parsed, CURLUPART_SCHEME, &scheme, 0) == CURLUE_OK &&
       curl_url_get(parsed, CURLUPART_HOST, &host, 0) == CURLUE_OK;
  ok = ok && (std::string_view(scheme) == "http" || std::string_view(scheme) == "https") &&
       host[0] != '\0';
  curl_free(scheme);
  curl_free(host);
  curl_url_cleanup(parsed);
  return ok;
}

}  // namespace

bool CaseInsensitiveLess::operator()(std::string_view a, std::string_view b) const {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return lower(x) < lower(y); });
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return lower(x) == lower(y); });
}

std::optional<HTTPURLResponse> HTTPURLResponse::make(std::string url, long statusCode,
                                                     std::string httpVersion,
                                                     HttpHeaderFields headerFields) {
  if (statusCode < 100 || statusCode > 599 || !isAbsoluteHttpUrl(url)) return std::nullopt;
  return HTTPURLResponse(std::move(url), statusCode, std::move(httpVersion),
                         std::move(headerFields));
}

HTTPURLResponse::HTTPURLResponse(std::string url, long statusCode, std::string httpVersion,
                                 HttpHeaderFields headerFields)
    : url_(std::move(url)),
      statusCode_(statusCode),
      httpVersion_(std::move(httpVersion)),
      headerFields_(std::move(headerFields)) {}

std::optional<std::string> HTTPURLResponse::value(std::string_view headerField) const {
  const auto it = headerFields_.find(headerField);
  if (it == headerFields_.end()) return std::nullopt;
  return it->second;
}

}  // namespace quorvel
