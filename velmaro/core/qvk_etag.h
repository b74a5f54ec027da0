#pragma once

#include <optional>
#include <string>

#include "quorvel/platform/url.h"
#include "quorvel/platform/url_request.h"
#include "velmaro/core/qvk_dispatcher_response.h"

namespace velmaro {

// A process-wide, in-memory table from absolute URL text to entity tag, used
// to make conditional requests and to recognise not-modified answers.
//
// The table starts empty and an entry is only ever replaced, never created:
// an ETag is stored only when one was already stored for the URL. As built,
// conditional requests are therefore never sent and unmodified() is true only
// for a 304 that arrives for another reason. This guard is deliberate.
class QVKETag {
 public:
  // Sets "If-None-Match" when the table holds an ETag for the request's URL.
  static void addEtagToRequest(quorvel::platform::URLRequest& request);
  static std::optional<std::string> eTagForURL(const quorvel::platform::Url& url);
  static void updateEtagsWithResponse(const QVKDispatcherResponse& response);
  // Updates the table first, then: is the status 304?
  static bool unmodified(const QVKDispatcherResponse& response);

  // Test-only: put an entry in place (nothing in the library does) and clear.
  static void seedForTesting(const std::string& absoluteUrl, const std::string& etag);
  static void resetForTesting();
};

}  // namespace velmaro
