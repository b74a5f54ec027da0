#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "velmaro/util/qvk_json_util.h"

namespace velmaro {

// A file attached to a Help Center article.
struct QVKHelpCenterAttachment {
  std::optional<std::int64_t> identifier;
  std::optional<std::string> url;
  std::optional<std::int64_t> article_id;
  std::optional<std::string> file_name;
  std::optional<std::string> content_url;
  std::optional<std::string> content_type;
  std::uint64_t size = 0;  // bytes
  bool isInline = false;

  static QVKHelpCenterAttachment parseAttachment(const boost::json::object& json);
  // The attachments under "article_attachments"; none when the key is missing.
  static std::vector<QVKHelpCenterAttachment> parseAttachments(const boost::json::object& json);

  // "512 B" up to 1023 bytes, then one decimal in units of 1024: "1.5 KB".
  std::string humanReadableFileSize() const;
};

BOOST_DESCRIBE_STRUCT(QVKHelpCenterAttachment, (),
                      (identifier, url, article_id, file_name, content_url, content_type, size,
                       isInline))

inline void tag_invoke(boost::json::value_from_tag, boost::json::value& json,
                       const QVKHelpCenterAttachment& record) {
  json = QVKJsonUtil::convertObjectToDictionary(record);
}

}  // namespace velmaro
