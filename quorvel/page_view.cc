#include "quorvel/page_view.h"

namespace quorvel {

boost::json::object PageView::toJson() const {
  boost::json::object json;
  json["type"] = "page_view";
  json["version"] = version;
  json["channel"] = channel;
  json["url"] = url;
  json["page_title"] = pageTitle;
  json["navigator_language"] = navigatorLanguage;
  json["page_id"] = pageId;
  json["page_locale"] = pageLocale;
  if (value) json["value"] = *value;
  return json;
}

}  // namespace quorvel
