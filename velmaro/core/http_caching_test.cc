// The ETag table's guard and the rewriting of the private cache header.
#include <gtest/gtest.h>

#include "quorvel/core_logger.h"
#include "velmaro/core/dravik_caching_delegate.h"
#include "velmaro/core/dravik_caching_transfromer.h"
#include "velmaro/core/qvk_etag.h"

namespace velmaro {
namespace {

quorvel::HTTPURLResponse response(long status, quorvel::HttpHeaderFields fields,
                                  const std::string& url = "https://h.test/api/x.json") {
  return *quorvel::HTTPURLResponse::make(url, status, "2", std::move(fields));
}

TEST(DravikCachingTest, PrivateHeaderBecomesCacheControlWithoutMustRevalidate) {
  struct Case {
    const char* privateValue;
    const char* stored;
  };
  const Case cases[] = {
      {"must-revalidate, max-age=3600", "max-age=3600"},
      {"max-age=60", "max-age=60"},
      {"must-revalidate", "must-revalidate"},  // no ", " after it: nothing to remove
  };
  DravikCachingDelegate delegate;
  for (const auto& c : cases) {
    auto original = response(200, {{"X-QV-Cache-Control", c.privateValue},
                                   {"Cache-Control", "no-cache"},
                                   {"ETag", "\"v1\""}});
    auto transformer = delegate.transformer(original);
    ASSERT_NE(transformer, nullptr) << c.privateValue;
    auto stored = transformer->transform(quorvel::CachedURLResponse(original, "{\"a\":1}"));
    EXPECT_EQ(stored.response().value("Cache-Control"), c.stored) << c.privateValue;
    EXPECT_EQ(stored.response().value("X-QV-Cache-Control"), c.privateValue);  // kept
    EXPECT_EQ(stored.response().value("ETag"), "\"v1\"");
    EXPECT_EQ(stored.response().httpVersion(), "1.1");
    EXPECT_EQ(stored.response().statusCode(), 200);
    EXPECT_EQ(stored.response().url(), original.url());
    EXPECT_EQ(stored.data(), "{\"a\":1}");
  }
}

TEST(DravikCachingTest, NoPrivateHeaderMeansNoTransformerAndAnUnchangedAnswer) {
  DravikCachingDelegate delegate;
  auto plain = response(200, {{"Cache-Control", "max-age=5"}});
  EXPECT_EQ(delegate.transformer(plain), nullptr);
  // The transformer itself also leaves such a response alone.
  DravikCachingTransfromer transformer("1.1", "Cache-Control", "must-revalidate, ");
  auto same = transformer.transform(quorvel::CachedURLResponse(plain, "body"));
  EXPECT_EQ(same.response().value("Cache-Control"), "max-age=5");
  EXPECT_EQ(same.response().httpVersion(), "2");
}

class QVKETagTest : public testing::Test {
 protected:
  void TearDown() override { QVKETag::resetForTesting(); }
};

TEST_F(QVKETagTest, AnEmptyTableIsNeverFilled) {
  const auto ok = QVKDispatcherResponse(response(200, {{"ETag", "\"abc\""}}), "{}");
  EXPECT_FALSE(QVKETag::unmodified(ok));
  auto url = quorvel::platform::Url::make("https://h.test/api/x.json");
  EXPECT_FALSE(QVKETag::eTagForURL(*url).has_value());
  quorvel::platform::URLRequest request(url);
  QVKETag::addEtagToRequest(request);
  EXPECT_FALSE(request.value("If-None-Match").has_value());
}

TEST_F(QVKETagTest, AnExistingEntryIsReplacedAndUsedAndA304IsUnmodified) {
  QVKETag::seedForTesting("https://h.test/api/x.json", "\"old\"");
  EXPECT_FALSE(
      QVKETag::unmodified(QVKDispatcherResponse(response(200, {{"ETag", "\"new\""}}), {})));
  auto url = quorvel::platform::Url::make("https://h.test/api/x.json");
  EXPECT_EQ(QVKETag::eTagForURL(*url), "\"new\"");
  quorvel::platform::URLRequest request(url);
  QVKETag::addEtagToRequest(request);
  EXPECT_EQ(request.value("If-None-Match"), "\"new\"");
  EXPECT_TRUE(QVKETag::unmodified(QVKDispatcherResponse(response(304, {}), std::nullopt)));
  EXPECT_FALSE(QVKETag::unmodified(QVKDispatcherResponse(std::nullopt, std::nullopt)));
}

}  // namespace
}  // namespace velmaro
