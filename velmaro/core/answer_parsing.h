#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "velmaro/core/parse_arena.h"
#include "velmaro/core/provider_request.h"
#include "velmaro/util/json_list_reader.h"
#include "velmaro/util/json_value_conversion.h"

namespace velmaro {

// The usual ways an answer becomes an operation's result.
class AnswerParsing {
 public:
  // The body as a JSON object, handed to `parse`. An absent, unparsable or
  // non-object body is read as an empty object, so the records come out empty
  // rather than the call failing.
  template <class Result, class Parse>
  static typename ProviderRequest<Result>::Parse json(Parse parse) {
    return [parse = std::move(parse)](
               QVKDispatcherResponse response) -> quorvel::platform::Result<Result> {
      // The JSON lives only while the records are made from it (they copy
      // what they keep), so one arena holds all of it and is let go at once
      // instead of value by value.
      ParseArena arena(response.data ? response.data->size() : 0);
      return parse(jsonObject(response, arena.storage()));
    };
  }

  // Below this size a list answer is parsed whole, once, into the thread's
  // arena: JsonListReader's two passes cost more than the tree of a short
  // answer does (a three-category page took a third more instructions).
  static constexpr std::size_t kWholeTreeBytes = 64 * 1024;

  // The records of the array under `key`, each made by `parseOne`; the body
  // is let go before the records are handed on. A long answer is read
  // element by element, so that no tree of the whole body is ever built.
  // Reads as json() with JsonValueConversion::parseList does: an absent,
  // unparsable or non-object body, or a missing key, gives no records.
  template <class Record>
  static typename ProviderRequest<std::vector<Record>>::Parse list(
      const char* key, Record (*parseOne)(const boost::json::object&)) {
    return [key, parseOne](
               QVKDispatcherResponse response) -> quorvel::platform::Result<std::vector<Record>> {
      std::vector<Record> records;
      if (!response.data) return records;
      if (response.data->size() <= kWholeTreeBytes) {
        ParseArena arena(response.data->size());
        records =
            JsonValueConversion::parseList(jsonObject(response, arena.storage()), key, parseOne);
        response.data.reset();
        return records;
      }
      const bool valid = JsonListReader::read(
          *response.data, key, [&](std::size_t count) { records.reserve(count); },
          [&](const boost::json::object& element) { records.push_back(parseOne(element)); });
      if (!valid) {
        if (!response.data->empty()) response.bodyUnreadable("the answer is not valid JSON");
        return std::vector<Record>{};
      }
      response.data.reset();
      return records;
    };
  }

  // JSON that cannot be read: the error a strict parse answers.
  static constexpr const char* kJsonErrorDomain = "velmaro.json";
  static constexpr long kJsonErrorCode = 3840;

  // As json(), but an absent, empty or malformed body is an error in
  // kJsonErrorDomain (with the parser's message) instead of an empty object;
  // valid JSON that is not an object still reads as an empty one.
  template <class Result, class Parse>
  static typename ProviderRequest<Result>::Parse strictJson(Parse parse) {
    return [parse = std::move(parse)](
               QVKDispatcherResponse response) -> quorvel::platform::Result<Result> {
      ParseArena arena(response.data ? response.data->size() : 0);
      boost::system::error_code ec;
      auto value = boost::json::parse(response.data.value_or(""), ec, arena.storage());
      if (ec) {
        if (response.data && !response.data->empty()) response.bodyUnreadable(ec.message());
        return jsonError(ec.message());
      }
      if (!value.is_object()) return parse(boost::json::object(arena.storage()));
      return parse(value.get_object());
    };
  }

  static quorvel::platform::Error jsonError(const std::string& reason) {
    quorvel::platform::Error error{kJsonErrorDomain, kJsonErrorCode, {}};
    error.userInfo[quorvel::platform::Error::kLocalizedDescriptionKey] =
        "The data couldn't be read because it isn't in the correct format.";
    error.userInfo["reason"] = reason;
    return error;
  }

  // The dispatcher's response itself, for operations that answer it.
  static ProviderRequest<QVKDispatcherResponse>::Parse response() {
    return [](QVKDispatcherResponse response) -> quorvel::platform::Result<QVKDispatcherResponse> {
      return response;
    };
  }

  // As below; a body that is there but does not parse is reported to the
  // response (logged, and kept out of the HTTP cache).
  static boost::json::object jsonObject(const QVKDispatcherResponse& response,
                                        boost::json::storage_ptr storage = {}) {
    if (!response.data || response.data->empty()) return boost::json::object(storage);
    boost::system::error_code ec;
    auto value = boost::json::parse(*response.data, ec, storage);
    if (ec) response.bodyUnreadable(ec.message());
    if (ec || !value.is_object()) return boost::json::object(storage);
    return std::move(value.as_object());
  }

  // The body as a JSON object; empty when it is absent, unparsable or not an
  // object. `storage` holds the values; the default is the heap.
  static boost::json::object jsonObject(const std::optional<std::string>& data,
                                        boost::json::storage_ptr storage = {}) {
    if (!data) return boost::json::object(storage);
    boost::system::error_code ec;
    auto value = boost::json::parse(*data, ec, storage);
    if (ec || !value.is_object()) return boost::json::object(storage);
    return std::move(value.as_object());
  }
};

}  // namespace velmaro
