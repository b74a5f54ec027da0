// The requests side's figures against a running qvk-emulator, each measured
// beside its floor in the same run, pairs in alternating order:
//   B6  getRequestsByStatus for a JWT user with 1,000 stored requests, call to
//       callback, vs a raw keep-alive GET of the same URL + the bare parse of
//       its answer + a bare SQLite read-modify-write of the same stored value
//   B7  getUpdatesForDevice answered from a fresh store of 1,000 requests vs
//       a bare SQLite read and parse of the same value
//   B8  getTicketFormWithIds answered from the form cache vs the same call
//       answered by the network (cache emptied)
// Runs on the driver's one thread, which also pumps the library's main queue.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/bare_request_store.h"
#include "bench/raw_client.h"
#include "bench/wire_figure.h"
#include "quorvel/platform/run_loop.h"
#include "quorvel/quorvel.h"
#include "velmaro/requests/qvk_request_provider.h"

namespace velmaro::bench {

class RequestWireFigures {
 public:
  // `rounds`: pairs per figure; `quartiles`: print each figure's spread.
  RequestWireFigures(const std::string& serviceUrl, const std::filesystem::path& dataDir,
                     int rounds, bool quartiles);
  ~RequestWireFigures();
  RequestWireFigures(const RequestWireFigures&) = delete;
  RequestWireFigures& operator=(const RequestWireFigures&) = delete;

  // B6, B7 and B8; `ok` turns false when a call failed.
  std::vector<Figure> measure(bool& ok);

 private:
  Figure updatesFigure(bool& ok);
  Figure listFigure(bool& ok);
  Figure ticketFormFigure(bool& ok);

  // One call through the provider, pumped to its callback; true when it
  // answered a value.
  bool listCall();
  bool updatesCall();
  bool ticketFormCall();
  // The raw floor of one list call.
  bool bareListCall();

  // What a figure measured against its floor is called, and its spread lines.
  struct Labels {
    const char* id;
    const char* measures;
    const char* floorSpread;
    const char* callSpread;
  };
  // `call` against `floor` after 50 uncounted pairs: the ratio of their
  // medians, met at or below `target`.
  template <class Floor, class Call>
  Figure againstFloor(const Labels& labels, double target, Floor&& floor, Call&& call, bool& ok);

  // Times `bare` and `library` pair by pair in alternating order; the
  // medians go to `bareTimes` / `libraryTimes`.
  template <class Bare, class Library>
  void pairs(int count, Bare&& bare, Library&& library, std::vector<double>& bareTimes,
             std::vector<double>& libraryTimes, bool& ok);

  std::string serviceUrl_;
  std::string listUrl_;
  int rounds_;
  bool quartiles_;
  std::shared_ptr<quorvel::platform::RunLoop> loop_;
  std::shared_ptr<quorvel::Quorvel> core_;
  std::unique_ptr<QVKRequestProvider> provider_;
  std::unique_ptr<RawClient> raw_;
  std::unique_ptr<BareRequestStore> bare_;
  std::string rawBody_;
};

}  // namespace velmaro::bench
