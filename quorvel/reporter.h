#pragma once

namespace quorvel {

// Where a ProviderService reports its outcome besides the callback. Only
// `none` exists: the libraries above keep their own accounts.
enum class Reporter { none };

}  // namespace quorvel
