#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "velmaro/requests/custom_field.h"
#include "velmaro/requests/qvk_upload_response.h"

namespace velmaro {

// What a caller fills before creating a request: subject, description (the
// first comment's body), tags, the tokens of files already uploaded, custom
// field values and the chosen ticket form.
class QVKCreateRequest {
 public:
  QVKCreateRequest() = default;
  // Reads "tags", "subject", "request_description", "attachments" (through
  // setAttachments) and "custom_fields" (each element a CustomField read
  // from its dictionary). Missing or null keys leave their property empty.
  static QVKCreateRequest initWithDict(const boost::json::object& json);

  std::optional<std::string> subject;
  std::optional<std::string> requestDescription;
  std::vector<std::string> tags;
  // None: no attachment list at all (the create body then has no "uploads").
  std::optional<std::vector<QVKUploadResponse>> attachmentsAlias;
  std::vector<CustomField> customFields;
  // None: no ticket form chosen.
  std::optional<std::int64_t> ticketFormId;

  // The upload token of every element of attachmentsAlias, in order; none
  // when no list was set.
  std::optional<std::vector<std::string>> attachments() const;
  // One upload response per token.
  void setAttachments(const std::vector<std::string>& tokens);
  // One upload response per element that is present and not JSON null (a
  // number is taken as its decimal text; objects, arrays and booleans are
  // not tokens and are skipped).
  void setAttachments(const boost::json::array& tokens);

  std::string description() const;
};

}  // namespace velmaro
