// HttpTransport against a loopback server: which thread finishes a request,
// exactly-once completion under concurrency and shutdown, kept-alive
// connections the server closes.
#include "quorvel/http_transport.h"

#include <atomic>
#include <functional>
#include <mutex>

#include <sys/resource.h>

#include "quorvel/core_fixture_test.h"
#include "quorvel/platform/transport_error.h"

namespace quorvel::testing {
namespace {

using namespace std::chrono_literals;

// The outcome of one submitted request, filled on whichever thread completes it.
struct Outcome {
  std::atomic<int> completions{0};
  std::thread::id thread;
  long status = 0;
  std::string body;
  std::optional<platform::Error> error;
};

// For failure messages: what came back instead of an answer.
std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << (outcome.error ? outcome.error->debugDescription() : "no error");
}

class HttpTransportTest : public ::testing::Test {
 protected:
  HttpTransportTest() : loop_(std::make_shared<platform::RunLoop>()) {
    server_.Get("/hello", [](const httplib::Request&, httplib::Response& res) {
      res.set_content("hello", "text/plain");
    });
    server_.Get("/slow", [](const httplib::Request&, httplib::Response& res) {
      std::this_thread::sleep_for(600ms);
      res.set_content("late", "text/plain");
    });
    useTransport(TransportLimits{});
  }

  // A new transport on the same loop (the fixture's is shut down).
  void useTransport(TransportLimits limits) {
    transport_ = std::make_unique<HttpTransport>(limits);
    transport_->attach(loop_);
  }

  // Short enough for a test, long against /slow.
  static TransportLimits shortTimeout() {
    TransportLimits limits;
    limits.requestTimeout = 300ms;
    return limits;
  }

  // `then` runs inside the completion, before it counts.
  std::shared_ptr<Outcome> submit(const std::string& path, std::function<void()> then = {}) {
    auto outcome = std::make_shared<Outcome>();
    TransportRequest request;
    request.url = server_.url() + path;
    transport_->submit(std::move(request), [outcome, then = std::move(then)](
                                               platform::Result<TransportResponse> result) {
      if (then) then();
      outcome->thread = std::this_thread::get_id();
      if (result.ok()) {
        outcome->status = result.value().statusCode;
        outcome->body = result.value().body;
      } else {
        outcome->error = result.error();
      }
      ++outcome->completions;
    });
    return outcome;
  }

  // Pumps the loop until `done`, checked every few milliseconds too: no task
  // announces what happens on the transport's thread or in the server.
  bool pumpUntil(const std::function<bool()>& done,
                 std::chrono::milliseconds timeout = std::chrono::seconds(5)) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    while (std::chrono::steady_clock::now() < deadline) {
      if (loop_->runUntil(done, 5ms)) return true;
    }
    return done();
  }

  // Waits for the request without pumping the loop, as a thread that sends
  // and then blocks would.
  static bool waitWithoutPumping(const Outcome& outcome) {
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (outcome.completions.load() == 0 && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(1ms);
    }
    return outcome.completions.load() > 0;
  }

  // Pumps until the request is complete (and a little longer, to catch a
  // second completion).
  bool pumpUntilDone(const Outcome& outcome) {
    const bool done = pumpUntil([&] { return outcome.completions.load() > 0; });
    loop_->runFor(5ms);
    return done;
  }

  LoopbackServer server_;
  std::shared_ptr<platform::RunLoop> loop_;
  std::unique_ptr<HttpTransport> transport_;
};

TEST_F(HttpTransportTest, AKeptAliveRequestFromTheLoopsThreadIsFinishedOnThatThread) {
  const auto first = submit("/hello");  // opens the connection on the transport's thread
  ASSERT_TRUE(pumpUntilDone(*first));
  EXPECT_EQ(first->status, 200) << *first;
  EXPECT_NE(first->thread, std::this_thread::get_id());

  // Sent from a task of the loop. The loop finishes such a request unless
  // the transport's thread happens to hold libcurl at that moment (then it
  // does), so one of a few must have been finished here.
  int finishedHere = 0;
  for (int i = 0; i < 5; ++i) {
    std::shared_ptr<Outcome> again;
    loop_->post([&] { again = submit("/hello"); });
    ASSERT_TRUE(pumpUntil([&] { return again != nullptr; }));
    ASSERT_TRUE(pumpUntilDone(*again));
    EXPECT_EQ(again->status, 200) << *again;
    EXPECT_EQ(again->body, "hello");
    EXPECT_EQ(again->completions.load(), 1);
    finishedHere += again->thread == std::this_thread::get_id() ? 1 : 0;
  }
  EXPECT_GE(finishedHere, 1);

  std::shared_ptr<Outcome> fromElsewhere;
  std::thread([&] { fromElsewhere = submit("/hello"); }).join();
  ASSERT_TRUE(pumpUntilDone(*fromElsewhere));
  EXPECT_EQ(fromElsewhere->status, 200);
  EXPECT_NE(fromElsewhere->thread, std::this_thread::get_id());
}

TEST_F(HttpTransportTest, ARequestForTheLoopCompletesEvenWhenTheLoopIsNotPumped) {
  ASSERT_TRUE(pumpUntilDone(*submit("/hello")));
  const auto outcome = submit("/hello");
  ASSERT_TRUE(waitWithoutPumping(*outcome));
  EXPECT_EQ(outcome->completions.load(), 1);
  EXPECT_EQ(outcome->status, 200);
}

TEST_F(HttpTransportTest, RequestsFromManyThreadsAndFromCompletionsAreEachCompletedOnce) {
  ASSERT_TRUE(pumpUntilDone(*submit("/hello")));
  constexpr int kThreads = 4;
  constexpr int kEach = 40;
  std::vector<std::shared_ptr<Outcome>> outcomes(kThreads * kEach + kEach);
  std::mutex chainedMutex;
  std::vector<std::shared_ptr<Outcome>> chained;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kEach; ++i)
        outcomes[static_cast<std::size_t>(t * kEach + i)] = submit("/hello");
    });
  }
  // The loop's own thread sends too, and every one of its completions sends
  // one more request from inside the completion.
  for (int i = 0; i < kEach; ++i) {
    outcomes[static_cast<std::size_t>(kThreads * kEach + i)] = submit("/hello", [&] {
      auto next = submit("/hello");
      std::lock_guard lock(chainedMutex);
      chained.push_back(std::move(next));
    });
    loop_->runPending();
  }
  for (auto& thread : threads) thread.join();
  auto complete = [](const std::vector<std::shared_ptr<Outcome>>& list) {
    return std::all_of(list.begin(), list.end(), [](const auto& o) { return o->completions > 0; });
  };
  ASSERT_TRUE(pumpUntil(
      [&] {
        std::lock_guard lock(chainedMutex);
        return chained.size() == static_cast<std::size_t>(kEach) && complete(outcomes) &&
               complete(chained);
      },
      20s));
  loop_->runFor(20ms);
  std::lock_guard lock(chainedMutex);
  outcomes.insert(outcomes.end(), chained.begin(), chained.end());
  for (const auto& outcome : outcomes) {
    EXPECT_EQ(outcome->completions.load(), 1);
    EXPECT_EQ(outcome->status, 200) << *outcome;
  }
}

TEST_F(HttpTransportTest, ATimeoutOnAKeptAliveConnectionReachesTheLoop) {
  useTransport(shortTimeout());
  ASSERT_TRUE(pumpUntilDone(*submit("/hello")));
  const auto outcome = submit("/slow");
  ASSERT_TRUE(pumpUntilDone(*outcome));
  EXPECT_EQ(outcome->completions.load(), 1);
  ASSERT_TRUE(outcome->error);
  EXPECT_EQ(outcome->error->code, static_cast<long>(platform::TransportErrorCode::kTimedOut));
}

TEST_F(HttpTransportTest, ShutdownCancelsEveryRequestOnceRunningOrWaitingForAConnection) {
  ASSERT_TRUE(pumpUntilDone(*submit("/hello")));
  // One the loop waits for, and more than one origin's six connections carry.
  std::vector<std::shared_ptr<Outcome>> outcomes{submit("/slow")};
  ASSERT_TRUE(pumpUntil([&] { return server_.count("/slow") == 1; }));
  std::thread([&] {
    for (int i = 0; i < 9; ++i) outcomes.push_back(submit("/slow"));
  }).join();
  ASSERT_TRUE(pumpUntil([&] { return server_.count("/slow") == 6; }));
  transport_->shutdown();
  loop_->runFor(20ms);
  for (const auto& outcome : outcomes) {
    EXPECT_EQ(outcome->completions.load(), 1);
    ASSERT_TRUE(outcome->error);
    EXPECT_EQ(outcome->error->code, static_cast<long>(platform::TransportErrorCode::kCancelled));
  }

  const auto afterwards = submit("/hello");
  EXPECT_EQ(afterwards->completions.load(), 1);
  ASSERT_TRUE(afterwards->error);
  EXPECT_EQ(afterwards->error->code, static_cast<long>(platform::TransportErrorCode::kCancelled));
}

double cpuSeconds() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  auto seconds = [](const timeval& t) { return t.tv_sec + t.tv_usec / 1e6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

TEST_F(HttpTransportTest, AConnectionTheServerClosedLeavesNoBusyLoopAndIsReplaced) {
  // Sent from a thread that pumps no loop: the transport's thread watches
  // the connection, and keeps it registered after the answer.
  std::thread([&] {
    for (int i = 0; i < 2; ++i) {
      const auto outcome = submit("/hello");
      ASSERT_TRUE(waitWithoutPumping(*outcome));
      ASSERT_EQ(outcome->status, 200);
    }
  }).join();
  // The server drops idle connections after a second. A transport that kept
  // reacting to the closed socket would burn the processor for the second
  // after that.
  const double before = cpuSeconds();
  std::this_thread::sleep_for(2000ms);
  EXPECT_LT(cpuSeconds() - before, 0.4);

  // Sent from the loop's thread as if the connection were idle; the new one
  // that replaces it is set up, and the request finished, by the transport's
  // thread.
  loop_->runFor(1ms);
  const auto outcome = submit("/hello");
  ASSERT_TRUE(pumpUntilDone(*outcome));
  EXPECT_EQ(outcome->status, 200) << *outcome;
  EXPECT_EQ(outcome->completions.load(), 1);
  EXPECT_NE(outcome->thread, std::this_thread::get_id());
}

}  // namespace
}  // namespace quorvel::testing
