#pragma once

#include <cstdint>

#include <boost/json/value.hpp>

#include "quorvel/platform/result.h"
#include "velmaro/settings/coding_keys.h"

namespace velmaro {

// Whether users may attach files to requests, and the largest size in bytes.
class AttachmentSettings {
 public:
  enum class Key { support, enabled, maxAttachmentSize, attachments };
  static constexpr CodingKeys<Key, 4> kCodingKeys{{{{Key::support, "support"},
                                                    {Key::enabled, "enabled"},
                                                    {Key::maxAttachmentSize, "max_attachment_size"},
                                                    {Key::attachments, "attachments"}}}};

  AttachmentSettings() = default;
  static quorvel::platform::Result<AttachmentSettings> decode(const boost::json::value& document);
  static AttachmentSettings defaultValue() { return AttachmentSettings(); }

  bool enabled() const { return enabled_; }
  std::int64_t maxAttachmentSize() const { return maxAttachmentSize_; }

 private:
  bool enabled_ = false;
  std::int64_t maxAttachmentSize_ = 0;
};

using QVKAttachmentSettings = AttachmentSettings;

}  // namespace velmaro
