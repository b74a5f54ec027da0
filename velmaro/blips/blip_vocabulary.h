#pragma once

#include <string>

namespace velmaro {

// The constant words stamped on every usage event, and the library version.
struct BlipVocabulary {
  static constexpr const char* kChannel = "dravik";
  static constexpr const char* kCategory = "Dravik";
  static constexpr const char* kSearchAction = "search";
  static constexpr const char* kSearchLabel = "helpCenterForm";
  static constexpr const char* kArticleVoteAction = "articleVote";
  static constexpr const char* kRequestCreatedAction = "requestCreated";
  static constexpr const char* kRequestUpdatedAction = "requestUpdated";

  // "SDKVersion" of the library's resource bundle, "1.0.0-default" without it.
  static const std::string& version();
};

}  // namespace velmaro
