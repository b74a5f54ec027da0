#pragma once

namespace quorvel {

enum class HttpMethod { get, post, put, delete_ };

// "GET", "POST", "PUT", "DELETE".
const char* httpMethodName(HttpMethod method);

}  // namespace quorvel
