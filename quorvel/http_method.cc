#include "quorvel/http_method.h"

namespace quorvel {

const char* httpMethodName(HttpMethod method) {
  switch (method) {
    case HttpMethod::get:
      return "GET";
    case HttpMethod::post:
      return "POST";
    case HttpMethod::put:
      return "PUT";
    case HttpMethod::delete_:
      return "DELETE";
  }
  return "GET";
}

}  // namespace quorvel
