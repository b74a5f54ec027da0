#pragma once

#include <string_view>

namespace qvk::emulator {

// The demo end user that `--seed sample` creates, with a few requests and
// agent replies. The token is a JWT with the payload
// {"email":"demo@example.com","name":"Demo User","iat":1767225600}; the
// emulator never checks JWT signatures (it is for offline tests), so this
// token works against any emulator and nowhere else.
inline constexpr std::string_view kDemoJwt =
    "eyJhbGciOiJIUzI1NiIsInR5cCI6IkpXVCJ9."
    "eyJlbWFpbCI6ImRlbW9AZXhhbXBsZS5jb20iLCJuYW1lIjoiRGVtbyBVc2VyIiwiaWF0IjoxNzY3MjI1NjAwfQ."
    "b2ZmbGluZS1kZW1vLXNpZ25hdHVyZS1ub3QtY2hlY2tlZA";
inline constexpr std::string_view kDemoUserName = "Demo User";
inline constexpr std::string_view kDemoUserEmail = "demo@example.com";

}  // namespace qvk::emulator
