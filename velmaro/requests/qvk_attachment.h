#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace velmaro {

// Width and height of an attachment's image, in points.
struct QVKImageDimension {
  double width = 0;
  double height = 0;
  bool operator==(const QVKImageDimension&) const = default;
};

// A file attached to a comment, or one thumbnail of such a file.
struct QVKAttachment {
  std::optional<std::int64_t> attachmentId;
  std::optional<std::string> filename;
  std::optional<std::string> contentURLString;
  std::optional<std::string> contentType;
  std::optional<std::int64_t> size;
  QVKImageDimension imageDimension;
  std::optional<std::vector<QVKAttachment>> thumbnails;

  // Thumbnails of thumbnails are read this many levels deep and no deeper,
  // so that a hostile answer cannot make parsing recurse without bound.
  static constexpr int kMaxThumbnailDepth = 8;

  static QVKAttachment initWithDict(const boost::json::object& json) { return parse(json, 0); }
  // Nothing for a missing or empty array (not an empty list); otherwise one
  // attachment per non-empty object element, in server order.
  static std::optional<std::vector<QVKAttachment>> parseThumbnails(const boost::json::array* array);

  // The rule of parseThumbnails for attachments `depth` levels down.
  static std::optional<std::vector<QVKAttachment>> parseList(const boost::json::array* array,
                                                             int depth);

  std::string description() const;

 private:
  static QVKAttachment parse(const boost::json::object& json, int depth);
};

}  // namespace velmaro
