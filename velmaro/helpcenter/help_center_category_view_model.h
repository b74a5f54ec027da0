#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quorvel/platform/result.h"
#include "velmaro/helpcenter/help_center_section_view_model.h"
#include "velmaro/util/keyed_decoding_container.h"

namespace velmaro {

// A category in the overview tree. Held by std::shared_ptr: the overview
// edits a category's sections in place when a see-all entry has loaded more.
class HelpCenterCategoryViewModel {
 public:
  HelpCenterCategoryViewModel() = delete;

  // Keys "id", "name", "sections", "section_count", all required.
  static quorvel::platform::Result<std::shared_ptr<HelpCenterCategoryViewModel>> decode(
      const KeyedDecodingContainer& container);

  const std::string& id() const { return id_; }
  const std::string& name() const { return name_; }
  const std::vector<HelpCenterSectionViewModel>& sections() const { return sections_; }
  void setSections(std::vector<HelpCenterSectionViewModel> sections) {
    sections_ = std::move(sections);
  }
  std::int64_t section_count() const { return section_count_; }

  // Replaces the first section with the same id by `section`, keeping the
  // order; an unknown id changes nothing. Returns this category.
  HelpCenterCategoryViewModel& update(const HelpCenterSectionViewModel& section);
  HelpCenterCategoryViewModel& updateWithSection(const HelpCenterSectionViewModel& section) {
    return update(section);
  }

 private:
  HelpCenterCategoryViewModel(std::string id, std::string name,
                              std::vector<HelpCenterSectionViewModel> sections,
                              std::int64_t sectionCount)
      : id_(std::move(id)),
        name_(std::move(name)),
        sections_(std::move(sections)),
        section_count_(sectionCount) {}

  std::string id_;
  std::string name_;
  std::vector<HelpCenterSectionViewModel> sections_;
  std::int64_t section_count_;
};

using QVKHelpCenterCategoryViewModel = HelpCenterCategoryViewModel;

}  // namespace velmaro
