// Parsing an article list with side-loads, against the bare JSON parse of the
// same bytes. The document is generated here, deterministically: 100 articles
// with HTML bodies of about 5 KB, 12 sections, 4 categories and 50 users,
// about 550 KB in all; one title in five holds an entity or markup.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <boost/json.hpp>

#include "bench/paired_cpu_timer.h"
#include "velmaro/core/answer_parsing.h"
#include "velmaro/helpcenter/qvk_help_center_parser.h"

namespace {

// A small linear congruential generator: the same document on every run.
class Sequence {
 public:
  std::uint32_t next() {
    state_ = state_ * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<std::uint32_t>(state_ >> 33);
  }
  std::uint32_t below(std::uint32_t n) { return next() % n; }

 private:
  std::uint64_t state_ = 0x5eed;
};

const char* const kWords[] = {"account", "password", "billing", "invoice", "device",  "settings",
                              "reset",   "support",  "profile", "payment", "order",   "shipping",
                              "refund",  "login",    "secure",  "update",  "network", "email"};

std::string words(Sequence& seq, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    if (i != 0) text += ' ';
    text += kWords[seq.below(std::size(kWords))];
  }
  return text;
}

std::string body(Sequence& seq, int article) {
  std::string html;
  int image = 0;
  while (html.size() < 4500) {
    switch (seq.below(6)) {
      case 0:
        html += "<h2>" + words(seq, 4) + "</h2>";
        break;
      case 1:
        html +=
            "<p>" + words(seq, 30) + " &amp; " + words(seq, 10) + "<br>" + words(seq, 12) + "</p>";
        break;
      case 2:
        html += "<p><img src=\"https://cdn.example.test/hc/" + std::to_string(article) + "/" +
                std::to_string(image++) + ".png\" alt=\"" + words(seq, 2) + "\"></p>";
        break;
      case 3:
        html += "<hr/><ul><li>" + words(seq, 8) + "</li><li>" + words(seq, 8) + "</li></ul>";
        break;
      case 4:
        html += "<p>" + words(seq, 20) + " &lt;code&gt; &quot;" + words(seq, 3) + "&quot;<br/>" +
                words(seq, 15) + "</p>";
        break;
      default:
        html += "<p><a href=\"https://help.example.test/articles/" + std::to_string(article) +
                "\">" + words(seq, 5) + "</a> " + words(seq, 25) + "</p>";
    }
  }
  return html;
}

std::string title(Sequence& seq, int article) {
  std::string text = words(seq, 5);
  text[0] = static_cast<char>(text[0] - 'a' + 'A');
  if (article % 5 == 0) {
    text += article % 10 == 0 ? " &amp; " + words(seq, 1) : " <b>" + words(seq, 1) + "</b>";
  }
  return text;
}

std::string makeDocument() {
  Sequence seq;
  boost::json::object root;
  boost::json::array articles;
  for (int i = 0; i < 100; ++i) {
    articles.push_back(boost::json::object{
        {"id", 360000100000LL + i},
        {"url", "https://help.example.test/api/v2/help_center/en-us/articles/" +
                    std::to_string(360000100000LL + i) + ".json"},
        {"html_url",
         "https://help.example.test/hc/en-us/articles/" + std::to_string(360000100000LL + i)},
        {"author_id", 900000 + static_cast<int>(seq.below(50))},
        {"comments_disabled", false},
        {"draft", false},
        {"promoted", i % 7 == 0},
        {"position", i},
        {"vote_sum", static_cast<int>(seq.below(20)) - 5},
        {"vote_count", 20 + static_cast<int>(seq.below(30))},
        {"section_id", 200000 + static_cast<int>(seq.below(12))},
        {"created_at", "2017-03-01T10:20:30Z"},
        {"updated_at", "2018-11-12T08:09:10Z"},
        {"edited_at", "2018-11-12T08:09:10Z"},
        {"name", title(seq, i)},
        {"title", title(seq, i)},
        {"source_locale", "en-us"},
        {"locale", "en-us"},
        {"outdated", false},
        {"outdated_locales", boost::json::array{}},
        {"label_names", boost::json::array{"faq", words(seq, 1)}},
        {"body", body(seq, i)},
    });
  }
  boost::json::array sections;
  for (int i = 0; i < 12; ++i) {
    sections.push_back(boost::json::object{{"id", 200000 + i},
                                           {"category_id", 100000 + i % 4},
                                           {"name", "Section " + words(seq, 2)},
                                           {"description", words(seq, 12)},
                                           {"position", i},
                                           {"locale", "en-us"},
                                           {"html_url", "https://help.example.test/hc/s"},
                                           {"created_at", "2017-01-01T00:00:00Z"}});
  }
  boost::json::array categories;
  for (int i = 0; i < 4; ++i) {
    categories.push_back(boost::json::object{{"id", 100000 + i},
                                             {"name", "Category " + words(seq, 1)},
                                             {"description", words(seq, 10)},
                                             {"position", i},
                                             {"locale", "en-us"}});
  }
  boost::json::array users;
  for (int i = 0; i < 50; ++i) {
    users.push_back(boost::json::object{{"id", 900000 + i},
                                        {"name", "Agent " + words(seq, 2)},
                                        {"email", "agent" + std::to_string(i) + "@example.test"},
                                        {"role", "agent"},
                                        {"photo", nullptr},
                                        {"locale", "en-us"}});
  }
  root["articles"] = std::move(articles);
  root["sections"] = std::move(sections);
  root["categories"] = std::move(categories);
  root["users"] = std::move(users);
  root["count"] = 100;
  root["page"] = 1;
  root["per_page"] = 100;
  return boost::json::serialize(root);
}

const std::string& document() {
  static const std::string bytes = makeDocument();
  return bytes;
}

// The answer as the dispatcher hands it on.
const std::optional<std::string>& answer() {
  static const std::optional<std::string> bytes = document();
  return bytes;
}

// The way an article list call makes records of its answer
// (AnswerParsing::json): the JSON in an arena let go at once.
std::vector<velmaro::QVKHelpCenterArticle> libraryParse() {
  velmaro::ParseArena arena(answer()->size());
  const auto json = velmaro::AnswerParsing::jsonObject(answer(), arena.storage());
  return velmaro::QVKHelpCenterParser(json).parseArticles(json);
}

void BM_BoostJsonParse(benchmark::State& state) {
  const auto& bytes = document();
  for (auto _ : state) {
    auto value = boost::json::parse(bytes);
    benchmark::DoNotOptimize(value);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
  state.counters["doc_bytes"] = static_cast<double>(bytes.size());
}

void BM_HelpCenterParse(benchmark::State& state) {
  const auto& bytes = document();
  for (auto _ : state) {
    auto articles = libraryParse();
    benchmark::DoNotOptimize(articles);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

// The B1 figure: both of the above, pair by pair.
void BM_HelpCenterParseAgainstBare(benchmark::State& state) {
  velmaro::bench::PairedCpuTimer::againstBareParse(state, document(),
                                                   [] { return libraryParse(); });
}

}  // namespace

BENCHMARK(BM_BoostJsonParse)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HelpCenterParse)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HelpCenterParseAgainstBare)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
