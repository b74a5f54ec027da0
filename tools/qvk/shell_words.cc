#include "tools/qvk/shell_words.h"

#include <optional>

namespace qvk {

namespace {

using quorvel::platform::Error;

bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool escapableInDoubleQuotes(char c) {
  return c == '$' || c == '`' || c == '"' || c == '\\' || c == '\n';
}

// Walks the line once; `word` is absent between words, so that a quoted empty
// string still makes a word while plain blanks do not.
class Splitter {
 public:
  explicit Splitter(std::string_view line) : line_(line) {}

  quorvel::platform::Result<std::vector<std::string>> run() {
    while (pos_ < line_.size()) {
      char c = line_[pos_];
      if (isBlank(c)) {
        endWord();
        ++pos_;
      } else if (c == '#' && !word_) {
        break;
      } else if (c == '\'') {
        if (auto error = singleQuoted()) return *error;
      } else if (c == '"') {
        if (auto error = doubleQuoted()) return *error;
      } else if (c == '\\') {
        if (pos_ + 1 >= line_.size()) {
          return Error::withDescription(ShellWords::kErrorDomain, ShellWords::kTrailingBackslash,
                                        "the line ends with a backslash");
        }
        append(line_[pos_ + 1]);
        pos_ += 2;
      } else {
        append(c);
        ++pos_;
      }
    }
    endWord();
    return std::move(words_);
  }

 private:
  std::optional<Error> singleQuoted() {
    auto close = line_.find('\'', pos_ + 1);
    if (close == std::string_view::npos) return unterminated('\'');
    startWord();
    word_->append(line_.substr(pos_ + 1, close - pos_ - 1));
    pos_ = close + 1;
    return std::nullopt;
  }

  std::optional<Error> doubleQuoted() {
    startWord();
    for (std::size_t i = pos_ + 1; i < line_.size(); ++i) {
      char c = line_[i];
      if (c == '"') {
        pos_ = i + 1;
        return std::nullopt;
      }
      if (c == '\\' && i + 1 < line_.size() && escapableInDoubleQuotes(line_[i + 1])) {
        ++i;
        if (line_[i] != '\n') word_->push_back(line_[i]);
        continue;
      }
      word_->push_back(c);
    }
    return unterminated('"');
  }

  static Error unterminated(char quote) {
    return Error::withDescription(ShellWords::kErrorDomain, ShellWords::kUnterminatedQuote,
                                  std::string("unterminated ") + quote + " quote");
  }

  void startWord() {
    if (!word_) word_.emplace();
  }
  void append(char c) {
    startWord();
    word_->push_back(c);
  }
  void endWord() {
    if (word_) words_.push_back(std::move(*word_));
    word_.reset();
  }

  std::string_view line_;
  std::size_t pos_ = 0;
  std::optional<std::string> word_;
  std::vector<std::string> words_;
};

}  // namespace

quorvel::platform::Result<std::vector<std::string>> ShellWords::split(std::string_view line) {
  return Splitter(line).run();
}

}  // namespace qvk
