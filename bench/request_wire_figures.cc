#include "bench/request_wire_figures.h"

#include <cstdio>

#include <boost/json.hpp>

#include "emulator/demo_identity.h"
#include "quorvel/jwt_identity.h"
#include "quorvel/provider_service.h"
#include "tests/emulator_process.h"
#include "velmaro/core/support.h"
#include "velmaro/core/support_headers.h"
#include "velmaro/storage/request_storage.h"
#include "velmaro/ticketforms/qvk_ticket_forms_provider_cacher.h"

namespace velmaro::bench {

namespace {

constexpr std::int64_t kStoredRequests = 1000;
constexpr const char* kStatus = QVKRequestProvider::kAllStatuses;
const std::vector<std::int64_t> kFormIds = {360000040001, 360000040002};

// A token of the demo user of its own, for the raw client.
std::string demoToken(const std::string& serviceUrl) {
  const auto answer = velmaro::testing::httpCall(
      serviceUrl, "POST", "/api/mobile/sdk/access/jwt.json",
      R"({"identity":{"jwt":")" + std::string(qvk::emulator::kDemoJwt) + R"("}})");
  boost::system::error_code ec;
  const auto json = boost::json::parse(answer.body, ec);
  if (ec || !json.is_object() || !json.as_object().contains("access_token")) return "";
  return std::string(json.at("access_token").as_string());
}

std::vector<RequestForStorage> storedRequests() {
  std::vector<RequestForStorage> list;
  for (std::int64_t i = 0; i < kStoredRequests; ++i) {
    list.emplace_back(std::to_string(100000 + i), 4, 2);
  }
  return list;
}

}  // namespace

RequestWireFigures::RequestWireFigures(const std::string& serviceUrl,
                                       const std::filesystem::path& dataDir, int rounds,
                                       bool quartiles)
    : serviceUrl_(serviceUrl),
      listUrl_(serviceUrl +
               "/api/mobile/requests.json?include=public_updated_at,last_commenting_agents,"
               "last_comment,first_comment&status=" +
               kStatus + "&sort_by=updated_at&sort_order=desc"),
      rounds_(rounds),
      quartiles_(quartiles),
      loop_(std::make_shared<quorvel::platform::RunLoop>()) {
  std::filesystem::create_directories(dataDir);
  quorvel::QuorvelOptions options;
  options.mainQueue = loop_;
  options.dataDirectory = dataDir / "library";
  options.logLevel = quorvel::LogLevel::off;
  core_ = quorvel::Quorvel::initialize("bench", serviceUrl, "bench-client", options);
  core_->setIdentity(std::make_shared<quorvel::JwtIdentity>(std::string(qvk::emulator::kDemoJwt)));
  Support::initialize(core_);
  provider_ = std::make_unique<QVKRequestProvider>(core_);
  RequestStorage::initWithQuorvel(*core_).storeRequestsAndResetCacheTime(storedRequests());

  quorvel::ProviderService service(core_->accountDetails(), listUrl_, true,
                                   quorvel::HttpMethod::get, std::make_shared<SupportHeaders>(),
                                   std::nullopt, loop_);
  auto headers = service.headers();
  headers.emplace_back("Authorization", "Bearer " + demoToken(serviceUrl));
  raw_ = std::make_unique<RawClient>(headers);
  bare_ = std::make_unique<BareRequestStore>(dataDir / "bare.sqlite", kStoredRequests);
}

RequestWireFigures::~RequestWireFigures() {
  provider_.reset();
  core_->shutdown();
  loop_->runPending();
}

std::vector<Figure> RequestWireFigures::measure(bool& ok) {
  // B7 first, while the store holds exactly the 1,000 seeded requests.
  std::vector<Figure> figures;
  figures.push_back(updatesFigure(ok));
  figures.insert(figures.begin(), listFigure(ok));
  figures.push_back(ticketFormFigure(ok));
  return figures;
}

template <class Bare, class Library>
void RequestWireFigures::pairs(int count, Bare&& bare, Library&& library,
                               std::vector<double>& bareTimes, std::vector<double>& libraryTimes,
                               bool& ok) {
  for (int i = 0; i < count; ++i) {
    if (i % 2 == 0) bareTimes.push_back(timeMicros(bare, ok));
    libraryTimes.push_back(timeMicros(library, ok));
    if (i % 2 != 0) bareTimes.push_back(timeMicros(bare, ok));
  }
}

template <class Floor, class Call>
Figure RequestWireFigures::againstFloor(const Labels& labels, double target, Floor&& floor,
                                        Call&& call, bool& ok) {
  std::vector<double> bare;
  std::vector<double> library;
  pairs(50, floor, call, bare, library, ok);  // warm-up, not counted
  bare.clear();
  library.clear();
  pairs(rounds_, floor, call, bare, library, ok);
  if (quartiles_) {
    printSpread(bare, labels.floorSpread);
    printSpread(library, labels.callSpread);
  }
  const double value = median(library);
  const double floorTime = median(bare);
  char targetText[16];
  std::snprintf(targetText, sizeof targetText, "<= %.1fx", target);
  return {labels.id, labels.measures,   "us",       value,
          floorTime, value / floorTime, targetText, value / floorTime <= target};
}

Figure RequestWireFigures::updatesFigure(bool& ok) {
  return againstFloor(
      {"B7", "getUpdatesForDevice from a fresh store of 1,000", "B7 bare read+parse us",
       "B7 getUpdatesForDevice us"},
      1.5, [&] { return bare_->read().is_object(); }, [&] { return updatesCall(); }, ok);
}

Figure RequestWireFigures::listFigure(bool& ok) {
  return againstFloor(
      {"B6", "getRequestsByStatus, 1,000 stored, call to callback",
       "B6 raw GET+parse+read-modify-write us", "B6 getRequestsByStatus us"},
      1.3, [&] { return bareListCall(); }, [&] { return listCall(); }, ok);
}

Figure RequestWireFigures::ticketFormFigure(bool& ok) {
  std::vector<double> network;
  std::vector<double> cached;
  auto fromNetwork = [&] {
    QVKTicketFormsProviderCacher::resetForTesting();
    return ticketFormCall();
  };
  auto fromCache = [&] { return ticketFormCall(); };
  // Each network call leaves the cache filled for the cached call after it.
  for (int i = 0; i < 50; ++i) ok = fromNetwork() && fromCache() && ok;
  for (int i = 0; i < rounds_; ++i) {
    network.push_back(timeMicros(fromNetwork, ok));
    cached.push_back(timeMicros(fromCache, ok));
  }
  if (quartiles_) {
    printSpread(network, "B8 network us");
    printSpread(cached, "B8 cache us");
  }
  const double value = median(cached);
  const double base = median(network);
  return {"B8",
          "getTicketFormWithIds from the form cache",
          "us",
          value,
          base,
          base / value,
          ">= 20x faster",
          base / value >= 20};
}

bool RequestWireFigures::listCall() {
  bool done = false;
  bool good = false;
  provider_->getRequestsByStatus(kStatus, [&](std::optional<QVKRequestsWithCommentingAgents> list,
                                              std::optional<quorvel::platform::Error> error) {
    good = list && list->requests && !list->requests->empty() && !error;
    done = true;
  });
  loop_->runUntil([&] { return done; }, std::chrono::seconds(30));
  return good;
}

bool RequestWireFigures::bareListCall() {
  if (!raw_->get(listUrl_, &rawBody_)) return false;
  const auto value = boost::json::parse(rawBody_);
  std::vector<std::string> ids;
  for (const auto& request : value.at("requests").as_array()) {
    ids.push_back(std::to_string(request.at("id").to_number<std::int64_t>()));
  }
  bare_->storeAll(ids);
  return !ids.empty();
}

bool RequestWireFigures::updatesCall() {
  bool good = false;
  // Answered at once on this thread: the store is fresh.
  provider_->getUpdatesForDevice(
      [&](std::optional<RequestUpdates> updates) { good = updates.has_value(); });
  return good;
}

bool RequestWireFigures::ticketFormCall() {
  bool done = false;
  bool good = false;
  provider_->getTicketFormWithIds(kFormIds,
                                  [&](std::optional<QVKRequestProvider::TicketForms> forms,
                                      std::optional<quorvel::platform::Error> error) {
                                    good = forms && forms->size() == kFormIds.size() && !error;
                                    done = true;
                                  });
  loop_->runUntil([&] { return done; }, std::chrono::seconds(30));
  return good;
}

}  // namespace velmaro::bench
