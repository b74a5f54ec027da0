// Parsing a list of 100 requests (with first and last comments, custom fields
// and the side-loaded commenting agents), against the bare JSON parse of the
// same bytes. The document is generated here, the same on every run.
#include <cstdint>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>
#include <boost/json.hpp>

#include "bench/paired_cpu_timer.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/requests/qvk_requests_response.h"
#include "velmaro/requests/qvk_requests_with_commenting_agents.h"

namespace {

boost::json::object comment(std::int64_t id, std::int64_t request, std::int64_t author) {
  // Several sentences, as real replies run: the list is about 300 KB.
  std::string text;
  for (int i = 0; i < 6; ++i) {
    text += "Thanks, the printer on floor " + std::to_string((id + i) % 9) +
            " still shows the paper jam after a restart. Any other idea? ";
  }
  return {{"id", id},
          {"body", text},
          {"html_body", "<div class=\"zd-comment\"><p>" + text + "<br>Regards</p></div>"},
          {"author_id", author},
          {"created_at", "2026-11-02T09:14:00Z"},
          {"request_id", request},
          {"attachments", boost::json::array{}}};
}

std::string makeDocument() {
  boost::json::array requests;
  for (std::int64_t i = 0; i < 100; ++i) {
    const std::int64_t id = 4000 + i;
    requests.push_back(boost::json::object{
        {"id", id},
        {"requester_id", 77},
        {"status", i % 3 == 0 ? "open" : "pending"},
        {"subject", "Printer on floor " + std::to_string(i % 9) + " is jammed"},
        {"description", "The printer says paper jam but there is no paper in it."},
        {"type", "problem"},
        {"created_at", "2026-11-01T08:00:00Z"},
        {"updated_at", "2026-11-02T09:14:00Z"},
        {"public_updated_at", "2026-11-02T09:14:00Z"},
        {"comment_count", 2 + i % 5},
        {"first_comment", comment(90000 + 2 * i, id, 77)},
        {"last_comment", comment(90001 + 2 * i, id, 500 + i % 4)},
        {"collaborator_ids", boost::json::array{78, 79}},
        {"last_commenting_agents_ids", boost::json::array{500 + i % 4}},
        {"custom_fields", boost::json::array{boost::json::object{{"id", 31}, {"value", "floor"}},
                                             boost::json::object{{"id", 32}, {"value", true}}}}});
  }
  boost::json::array agents;
  for (int i = 0; i < 4; ++i) {
    agents.push_back(boost::json::object{
        {"id", 500 + i},
        {"name", "Agent " + std::to_string(i)},
        {"agent", true},
        {"photo", boost::json::object{{"content_url", "https://cdn.example.test/a.png"}}}});
  }
  return boost::json::serialize(
      boost::json::object{{"requests", std::move(requests)}, {"last_commenting_agents", agents}});
}

const std::string& document() {
  static const std::string bytes = makeDocument();
  return bytes;
}

const std::optional<std::string>& answer() {
  static const std::optional<std::string> bytes = document();
  return bytes;
}

// The way a list call makes its answer of the body (AnswerParsing): the JSON
// in an arena let go at once. Without a core library instance the store is
// not updated, so this is the parse alone.
velmaro::QVKRequestsWithCommentingAgents libraryParse() {
  velmaro::ParseArena arena(answer()->size());
  const auto json = velmaro::AnswerParsing::jsonObject(answer(), arena.storage());
  return velmaro::QVKRequestsWithCommentingAgents::initWithRequests(
      velmaro::QVKRequestsResponse::parseRequestListWithDictionary(json),
      velmaro::QVKRequestsResponse::parseRequestListAgentsWithDictionary(json));
}

void BM_RequestListJsonParse(benchmark::State& state) {
  const auto& bytes = document();
  for (auto _ : state) {
    auto value = boost::json::parse(bytes);
    benchmark::DoNotOptimize(value);
  }
  state.counters["doc_bytes"] = static_cast<double>(bytes.size());
}

void BM_RequestListParse(benchmark::State& state) {
  for (auto _ : state) {
    auto list = libraryParse();
    benchmark::DoNotOptimize(list);
  }
}

// The B5 figure: the list to what a list call answers, against the bare
// parse, pair by pair.
void BM_RequestListParseAgainstBare(benchmark::State& state) {
  const auto& bytes = document();
  velmaro::bench::PairedCpuTimer::againstBareParse(state, bytes, [] { return libraryParse(); });
  state.counters["doc_bytes"] = static_cast<double>(bytes.size());
}

}  // namespace

BENCHMARK(BM_RequestListParseAgainstBare)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RequestListJsonParse)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RequestListParse)->Unit(benchmark::kMicrosecond);
