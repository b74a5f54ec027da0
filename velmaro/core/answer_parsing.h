#pragma once

#include <functional>
#include <optional>
#include <string>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>

#include "velmaro/core/provider_request.h"

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
      unsigned char firstBlock[4096];
      boost::json::monotonic_resource arena(firstBlock, sizeof firstBlock);
      return parse(jsonObject(response.data, &arena));
    };
  }

  // The dispatcher's response itself, for operations that answer it.
  static ProviderRequest<QVKDispatcherResponse>::Parse response() {
    return [](QVKDispatcherResponse response) -> quorvel::platform::Result<QVKDispatcherResponse> {
      return response;
    };
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
