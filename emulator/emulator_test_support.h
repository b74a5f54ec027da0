#pragma once

// Test helpers: an in-process emulator on a free loopback port and a plain
// HTTP client that talks to it the way any client would.

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>
#include <httplib.h>

#include "emulator/demo_identity.h"
#include "emulator/emulator_server.h"

namespace qvk::emulator::testing {

struct Answer {
  int status = 0;  // 0: no answer (connection failed)
  std::string body;
  httplib::Headers headers;
  boost::json::value json;  // null when the body is not JSON

  std::string header(const char* name) const {
    auto it = headers.find(name);
    return it == headers.end() ? std::string() : it->second;
  }
};

// The value at a JSON pointer: at(v, "/comments/0/body"); null when there is none.
inline const boost::json::value& at(const boost::json::value& v, std::string_view pointer) {
  static const boost::json::value kNull;
  boost::system::error_code ec;
  const auto* found = v.find_pointer(pointer, ec);
  return found ? *found : kNull;
}

class EmulatorTest : public ::testing::Test {
 protected:
  void SetUp() override { startWith(EmulatorOptions{}); }

  void startWith(EmulatorOptions options) {
    client_.reset();
    server_.reset();
    options.port = 0;
    options.quiet = true;
    options.threads = 16;
    tune(options);
    server_ = std::make_unique<EmulatorServer>(options);
    std::string error;
    ASSERT_TRUE(server_->start(error)) << error;
    client_ = std::make_unique<httplib::Client>("127.0.0.1", server_->port());
    client_->set_keep_alive(true);
    client_->set_tcp_nodelay(true);
    client_->set_read_timeout(10, 0);
  }
  // Lets a suite change the options before the server starts.
  virtual void tune(EmulatorOptions&) {}

  static Answer wrap(const httplib::Result& r) {
    Answer a;
    if (!r) return a;
    a.status = r->status;
    a.body = r->body;
    a.headers = r->headers;
    boost::system::error_code ec;
    auto v = boost::json::parse(a.body, ec);
    if (!ec) a.json = std::move(v);
    return a;
  }

  static httplib::Headers auth(const std::string& token, httplib::Headers more = {}) {
    if (!token.empty()) more.emplace("Authorization", "Bearer " + token);
    return more;
  }

  Answer get(const std::string& path, const std::string& token = {}, httplib::Headers h = {}) {
    return wrap(client_->Get(path.c_str(), auth(token, std::move(h))));
  }
  Answer post(const std::string& path, const std::string& body, const std::string& token = {},
              httplib::Headers h = {}, const char* type = "application/json") {
    return wrap(client_->Post(path.c_str(), auth(token, std::move(h)), body, type));
  }
  Answer put(const std::string& path, const std::string& body, const std::string& token = {}) {
    return wrap(client_->Put(path.c_str(), auth(token), body, "application/json"));
  }
  Answer del(const std::string& path, const std::string& token = {}) {
    return wrap(client_->Delete(path.c_str(), auth(token)));
  }
  // GET, POST or PUT by name, with a JSON body.
  Answer call(const std::string& method, const std::string& path, const std::string& body,
              const std::string& token) {
    if (method == "GET") return get(path, token);
    if (method == "PUT") return put(path, body, token);
    return post(path, body, token);
  }

  std::string tokenFrom(const Answer& a) {
    EXPECT_EQ(a.status, 201) << a.body;
    const auto& t = at(a.json, "/access_token");
    return t.is_string() ? std::string(t.as_string()) : std::string();
  }
  std::string demoToken() {
    return tokenFrom(post("/api/mobile/sdk/access/jwt.json",
                          R"({"identity":{"jwt":")" + std::string(kDemoJwt) + R"("}})"));
  }
  std::string anonymousToken(const std::string& guid) {
    return tokenFrom(post("/api/mobile/sdk/access/anonymous.json",
                          R"({"identity":{"guid":")" + guid + R"(","name":"Anna"}})"));
  }

  std::unique_ptr<EmulatorServer> server_;
  std::unique_ptr<httplib::Client> client_;
};

// Cases print as their names in test listings and failures. A file's
// anonymous namespace brings this in with `using testing::PrintTo;`.
template <typename Case>
requires requires(const Case& c) {
  std::string_view(c.name);
}
void PrintTo(const Case& c, std::ostream* os) {
  *os << c.name;
}

// Test names from the cases' "name" members.
struct CaseName {
  template <typename P>
  std::string operator()(const ::testing::TestParamInfo<P>& p) const {
    std::string n = p.param.name;
    for (auto& ch : n)
      if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
    return n;
  }
};

inline std::size_t sizeOf(const boost::json::value& v) {
  return v.is_array() ? v.as_array().size() : 0;
}

// One expectation on an answer's JSON at a JSON pointer ("/requests/0/id"):
// the value there, the size of the list there, or the kind of value there.
struct Check {
  std::string pointer;
  boost::json::value value;
  enum { kEqual, kSize, kKind } what = kEqual;
  boost::json::kind kind = boost::json::kind::null;
};
inline Check is(std::string pointer, boost::json::value value) {
  return {std::move(pointer), std::move(value)};
}
inline Check sized(std::string pointer, std::size_t size) {
  return {std::move(pointer), size, Check::kSize};
}
inline Check kindAt(std::string pointer, boost::json::kind kind) {
  return {std::move(pointer), nullptr, Check::kKind, kind};
}

inline void expectChecks(const Answer& a, const std::vector<Check>& checks) {
  for (const auto& c : checks) {
    boost::system::error_code ec;
    const auto* found = a.json.find_pointer(c.pointer, ec);
    if (!found) {
      ADD_FAILURE() << "nothing at " << c.pointer << " in " << a.body.substr(0, 300);
    } else if (c.what == Check::kSize) {
      EXPECT_TRUE(found->is_array()) << c.pointer;
      EXPECT_EQ(sizeOf(*found), c.value.to_number<std::size_t>()) << c.pointer;
    } else if (c.what == Check::kKind) {
      EXPECT_EQ(found->kind(), c.kind) << c.pointer;
    } else {
      EXPECT_EQ(*found, c.value) << c.pointer;
    }
  }
}

// A call to one route and what its answer holds.
struct RouteCase {
  const char* name;
  std::string path;
  int status;
  std::vector<Check> checks;
};
inline void PrintTo(const RouteCase& c, std::ostream* os) {
  *os << c.name << ": " << c.path;
}

}  // namespace qvk::emulator::testing
