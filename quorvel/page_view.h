#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

namespace quorvel {

// A usage event: the user looked at a page.
struct PageView {
  std::string version;
  std::string channel;
  std::string url;
  std::string pageTitle;
  std::string navigatorLanguage;
  std::int64_t pageId = 0;
  std::string pageLocale;
  std::optional<boost::json::value> value;

  PageView(std::string version_, std::string channel_, std::string url_, std::string pageTitle_,
           std::string navigatorLanguage_, std::int64_t pageId_, std::string pageLocale_,
           std::optional<boost::json::value> value_ = std::nullopt)
      : version(std::move(version_)),
        channel(std::move(channel_)),
        url(std::move(url_)),
        pageTitle(std::move(pageTitle_)),
        navigatorLanguage(std::move(navigatorLanguage_)),
        pageId(pageId_),
        pageLocale(std::move(pageLocale_)),
        value(std::move(value_)) {}

  // {"type":"page_view","version","channel","url","page_title",
  //  "navigator_language","page_id","page_locale","value"?}
  boost::json::object toJson() const;
};

}  // namespace quorvel
