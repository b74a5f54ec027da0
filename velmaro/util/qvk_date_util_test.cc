// Wire timestamps and the per-thread formatter cache.
#include "velmaro/util/qvk_date_util.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <thread>

#include <boost/json.hpp>
#include <gtest/gtest.h>

namespace velmaro {
namespace {

using namespace std::chrono;

// Runs the body under another process time zone, so that results that
// depend on the machine's zone would show.
class TimeZoneGuard {
 public:
  explicit TimeZoneGuard(const char* zone) {
    if (const char* old = std::getenv("TZ")) saved_ = old;
    setenv("TZ", zone, 1);
    tzset();
  }
  ~TimeZoneGuard() {
    if (saved_) {
      setenv("TZ", saved_->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

 private:
  std::optional<std::string> saved_;
};

struct ParseCase {
  const char* text;
  std::optional<std::int64_t> seconds;  // since 1970, or nothing
};

class DateParseTest : public ::testing::TestWithParam<ParseCase> {};

TEST_P(DateParseTest, WireTimestampsAreUtcWhateverTheMachineZone) {
  for (const char* zone : {"UTC", "America/Los_Angeles", "Asia/Kolkata"}) {
    TimeZoneGuard guard(zone);
    const auto date = QVKDateUtil::dateForJsonString(GetParam().text);
    ASSERT_EQ(date.has_value(), GetParam().seconds.has_value()) << GetParam().text << " " << zone;
    if (date) {
      EXPECT_EQ(duration_cast<seconds>(date->time_since_epoch()).count(), *GetParam().seconds);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Texts, DateParseTest,
                         ::testing::Values(ParseCase{"2017-03-01T10:20:30Z", 1488363630},
                                           ParseCase{"1970-01-01T00:00:00Z", 0},
                                           ParseCase{"2016-02-29T23:59:59Z", 1456790399},
                                           ParseCase{"2017-03-01", std::nullopt},
                                           ParseCase{"2017-03-01T10:20:30", std::nullopt},
                                           ParseCase{"2017-02-30T10:20:30Z", std::nullopt},
                                           ParseCase{"garbage", std::nullopt},
                                           // The last second a time point holds, and
                                           // years it cannot hold.
                                           ParseCase{"2261-12-31T23:59:59Z", 9214646399},
                                           ParseCase{"9807-03-01T10:20:30Z", std::nullopt},
                                           ParseCase{"1600-01-01T00:00:00Z", std::nullopt},
                                           ParseCase{"", std::nullopt}));

TEST(DateUtilTest, JsonValuesOtherThanStringsGiveNothing) {
  const boost::json::value null = nullptr;
  const boost::json::value number = 5;
  const boost::json::value text = "2017-03-01T10:20:30Z";
  EXPECT_FALSE(QVKDateUtil::dateForJsonString(nullptr));
  EXPECT_FALSE(QVKDateUtil::dateForJsonString(&null));
  EXPECT_FALSE(QVKDateUtil::dateForJsonString(&number));
  EXPECT_TRUE(QVKDateUtil::dateForJsonString(&text));
}

TEST(DateUtilTest, FormattingRoundTripsAndTruncatesFractions) {
  TimeZoneGuard guard("Pacific/Auckland");
  const auto date = QVKDateUtil::dateFromNumber(1488363630.75);
  EXPECT_EQ(QVKDateUtil::stringFromDate(date), "2017-03-01T10:20:30Z");
  EXPECT_DOUBLE_EQ(QVKDateUtil::dateAsNumber(date), 1488363630.75);
  EXPECT_EQ(QVKDateUtil::stringFromDate(QVKDateUtil::dateFromNumber(-1)), "1969-12-31T23:59:59Z");
  // The formatter and the fast path agree.
  EXPECT_EQ(QVKDateUtil::formatterForFormat(QVKDateUtil::kJsonDateFormat).format(date),
            QVKDateUtil::stringFromDate(date));
}

TEST(DateUtilTest, OtherFormatsAreTemplatesForTheCurrentLocale) {
  const auto date =
      QVKDateUtil::dateFromString("2017-03-01T10:20:30Z", QVKDateUtil::kJsonDateFormat);
  ASSERT_TRUE(date);
  const auto year = QVKDateUtil::stringFromDate(*date, "yyyy");
  EXPECT_EQ(year, "2017");
}

TEST(DateUtilTest, FormattersAreCachedPerThread) {
  auto& mine = QVKDateUtil::formatterForFormat("yyyyMMdd");
  EXPECT_EQ(&mine, &QVKDateUtil::formatterForFormat("yyyyMMdd"));
  EXPECT_TRUE(QVKDateUtil::dateFormatterDict().contains("yyyyMMdd"));
  const void* other = nullptr;
  bool otherSawEmptyCache = false;
  std::thread thread([&] {
    otherSawEmptyCache = !QVKDateUtil::dateFormatterDict().contains("yyyyMMdd");
    other = &QVKDateUtil::formatterForFormat("yyyyMMdd");
  });
  thread.join();
  EXPECT_TRUE(otherSawEmptyCache);
  EXPECT_NE(other, static_cast<const void*>(&mine));
}

}  // namespace
}  // namespace velmaro
