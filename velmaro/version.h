#pragma once

#include <string>

namespace velmaro {

// The version the library was built as (the project version).
std::string buildVersion();

}  // namespace velmaro
