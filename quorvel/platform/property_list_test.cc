#include "quorvel/platform/property_list.h"

#include <string>

#include <gtest/gtest.h>

namespace quorvel::platform {
namespace {

std::string nested(std::size_t depth) {
  std::string xml = "<plist version=\"1.0\">";
  for (std::size_t i = 0; i < depth; ++i) xml += "<array>";
  for (std::size_t i = 0; i < depth; ++i) xml += "</array>";
  return xml + "</plist>";
}

// Past the limit libplist is never called: at a few hundred thousand levels
// it overflows the stack.
TEST(PropertyListTest, NestingIsBoundedByTheContainerCount) {
  EXPECT_TRUE(PropertyList::parse(nested(PropertyList::kMaxXmlContainers)));
  EXPECT_FALSE(PropertyList::parse(nested(PropertyList::kMaxXmlContainers + 1)));
  EXPECT_FALSE(PropertyList::parse(nested(300000)));
}

}  // namespace
}  // namespace quorvel::platform
