#include "quorvel/platform/http_status_text.h"

namespace quorvel::platform {

std::string HttpStatusText::localizedString(long statusCode) {
  switch (statusCode) {
    case 100:
      return "continue";
    case 101:
      return "switching protocols";
    case 200:
      return "no error";
    case 201:
      return "created";
    case 202:
      return "accepted";
    case 204:
      return "no content";
    case 206:
      return "partial content";
    case 301:
      return "moved permanently";
    case 302:
      return "found";
    case 303:
      return "see other";
    case 304:
      return "not modified";
    case 307:
      return "temporarily redirected";
    case 308:
      return "permanently redirected";
    case 400:
      return "bad request";
    case 401:
      return "unauthorized";
    case 402:
      return "payment required";
    case 403:
      return "forbidden";
    case 404:
      return "not found";
    case 405:
      return "method not allowed";
    case 406:
      return "unacceptable";
    case 408:
      return "request timed out";
    case 409:
      return "conflict";
    case 410:
      return "no longer exists";
    case 413:
      return "request too large";
    case 415:
      return "unsupported media type";
    case 422:
      return "unprocessable entity";
    case 429:
      return "too many requests";
    case 500:
      return "internal server error";
    case 501:
      return "unimplemented";
    case 502:
      return "bad gateway";
    case 503:
      return "service unavailable";
    case 504:
      return "gateway timed out";
    default:
      break;
  }
  if (statusCode >= 100 && statusCode < 200) return "informational";
  if (statusCode >= 200 && statusCode < 300) return "success";
  if (statusCode >= 300 && statusCode < 400) return "redirected";
  if (statusCode >= 400 && statusCode < 500) return "client error";
  if (statusCode >= 500 && statusCode < 600) return "server error";
  return "unknown";
}

}  // namespace quorvel::platform
