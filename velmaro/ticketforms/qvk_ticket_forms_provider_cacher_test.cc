// The process-wide ticket-form cache.
#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include <boost/json.hpp>
#include <gtest/gtest.h>

#include "velmaro/ticketforms/raw_json.h"

namespace velmaro {
namespace {

using Cacher = QVKTicketFormsProviderCacher;

Cacher::TicketForm form(const char* json) {
  return QVKTicketForm::createWithDictionary(boost::json::parse(json).as_object());
}

Cacher::TicketForm form(std::int64_t id) {
  return QVKTicketForm::createWithDictionary(boost::json::object{{"id", id}});
}

std::vector<std::int64_t> idsOf(const std::vector<Cacher::TicketForm>& forms) {
  std::vector<std::int64_t> ids;
  for (const auto& f : forms) ids.push_back(RawJson::int64(f->formId).value_or(-1));
  return ids;
}

class TicketFormsCacherTest : public ::testing::Test {
 protected:
  void SetUp() override { Cacher::resetForTesting(); }
  void TearDown() override { Cacher::resetForTesting(); }
};

struct LookupCase {
  const char* label;
  std::vector<std::int64_t> cached;  // empty: no cache at all
  std::vector<std::int64_t> asked;
  std::vector<std::int64_t> found;
  bool containsAll;
};

class TicketFormsLookupTest : public ::testing::TestWithParam<LookupCase> {};

TEST_P(TicketFormsLookupTest, AnswersInTheOrderAsked) {
  const auto& c = GetParam();
  Cacher::CachePtr cache;
  if (!c.cached.empty()) {
    std::vector<Cacher::TicketForm> forms;
    for (const auto id : c.cached) forms.push_back(form(id));
    cache = Cacher::updateCache(nullptr, forms);
  }
  EXPECT_EQ(idsOf(Cacher::ticketFormsWithIds(c.asked, cache)), c.found);
  EXPECT_EQ(Cacher::cache(cache, c.asked), c.containsAll);
}

INSTANTIATE_TEST_SUITE_P(
    Cache, TicketFormsLookupTest,
    ::testing::Values(LookupCase{"OneOfTwoCachedGoesToTheNetwork", {1}, {1, 2}, {1}, false},
                      LookupCase{"BothCachedAnswerInTheOrderAsked", {1, 2}, {2, 1}, {2, 1}, true},
                      LookupCase{"NoneCached", {1}, {4, 5}, {}, false},
                      LookupCase{"NoCacheHoldsNothing", {}, {1}, {}, false},
                      LookupCase{"EmptyListIsContained", {1}, {}, {}, true},
                      LookupCase{"EmptyListWithNoCache", {}, {}, {}, true},
                      LookupCase{"RepeatedId", {1}, {1, 1}, {1, 1}, true}),
    [](const auto& param) { return std::string(param.param.label); });

TEST_F(TicketFormsCacherTest, UpdateMakesANewDictionaryOfTheSameForms) {
  const auto one = form(R"({"id": 1, "name": "first"})");
  const auto two = form(R"({"id": 2.0, "name": "two as a double"})");
  const auto old = Cacher::updateCache(nullptr, {one});
  const auto replacement = form(R"({"id": 1, "name": "second"})");
  const auto updated = Cacher::updateCache(old, {two, replacement});

  // The old dictionary is untouched; the new one holds the given objects.
  ASSERT_EQ(old->size(), 1u);
  EXPECT_EQ(old->at(1), one);
  ASSERT_EQ(updated->size(), 2u);
  EXPECT_EQ(updated->at(1), replacement);
  EXPECT_EQ(updated->at(2), two);
  EXPECT_EQ(Cacher::ticketFormsWithIds({2}, updated).front(), two);
}

TEST_F(TicketFormsCacherTest, FormsWithoutANumericIdAreNotStored) {
  const auto updated = Cacher::updateCache(
      nullptr, {form("{}"), form(R"({"id": null})"), form(R"({"id": "3"})"), form(R"({"id": 3.5})"),
                form(R"({"id": 1e300})"), nullptr, form(R"({"id": 3})")});
  ASSERT_EQ(updated->size(), 1u);
  EXPECT_TRUE(updated->contains(3));
}

TEST_F(TicketFormsCacherTest, TheProcessCacheIsReplacedWhole) {
  EXPECT_EQ(Cacher::cachedTicketForms(), nullptr);
  const auto first = Cacher::updateCache(Cacher::cachedTicketForms(), {form(1)});
  Cacher::setCachedTicketForms(first);
  EXPECT_EQ(Cacher::cachedTicketForms(), first);
  Cacher::setCachedTicketForms(Cacher::updateCache(Cacher::cachedTicketForms(), {form(2)}));
  const auto second = Cacher::cachedTicketForms();
  EXPECT_TRUE(Cacher::cache(second, {1, 2}));
  EXPECT_EQ(second->at(1), first->at(1));  // the same object as first cached
  Cacher::resetForTesting();
  EXPECT_EQ(Cacher::cachedTicketForms(), nullptr);
}

// Readers on several threads while a writer replaces the cache: each reader
// sees one complete dictionary or the other, never a mix or a torn reference.
// Under ThreadSanitizer a non-atomic replacement is reported as a data race.
TEST_F(TicketFormsCacherTest, ReadersAlwaysSeeACompleteDictionary) {
  const auto low = Cacher::updateCache(nullptr, {form(1), form(2), form(3)});
  const auto high = Cacher::updateCache(nullptr, {form(4), form(5), form(6)});
  Cacher::setCachedTicketForms(low);

  constexpr int kWrites = 2000;
  std::atomic<bool> done{false};
  std::atomic<int> torn{0};
  std::vector<std::thread> readers;
  for (int r = 0; r < 3; ++r) {
    readers.emplace_back([&] {
      while (!done.load()) {
        const auto cache = Cacher::cachedTicketForms();
        const bool isLow = Cacher::cache(cache, {1, 2, 3});
        const bool isHigh = Cacher::cache(cache, {4, 5, 6});
        if (cache->size() != 3 || isLow == isHigh) torn.fetch_add(1);
      }
    });
  }
  for (int i = 0; i < kWrites; ++i) {
    // Like a fetch: read, build a new dictionary, replace.
    const auto current = Cacher::cachedTicketForms();
    Cacher::setCachedTicketForms(current->contains(1) ? high : low);
  }
  done = true;
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(torn.load(), 0);
}

}  // namespace
}  // namespace velmaro
