#pragma once

#include <functional>

#include "tools/qvk/answer.h"
#include "tools/qvk/output.h"
#include "tools/qvk/parsed_command.h"
#include "tools/qvk/session.h"
#include "velmaro/helpcenter/qvk_help_center_provider.h"

namespace qvk {

// The `hc` commands: each calls one operation of the Help Center provider
// (the convenience form when no option narrows it), waits for the answer on
// the session's main queue and prints it. Returns the exit status.
class HcCommands {
 public:
  HcCommands(Session& session, Output& output) : session_(session), output_(output) {}

  int run(const ParsedCommand& command);

 private:
  template <class R>
  using Start = std::function<void(velmaro::QVKHelpCenterCallback<R>)>;

  // Starts the call, waits for its first answer and prints the records.
  template <class R>
  int list(const Start<R>& start);
  // Like list(), but prints articles as cards.
  int articles(const Start<velmaro::QVKHelpCenterArticle>& start);
  int overview(const HcArguments& arguments);
  int vote(const Start<velmaro::QVKHelpCenterArticleVote>& start);
  int unvote(const HcArguments& arguments);
  int search(const HcArguments& arguments);
  int searchQuery(const HcArguments& arguments);
  int suggest(const HcArguments& arguments);
  int flat(const HcArguments& arguments);
  int sectionArticles(const HcArguments& arguments);

  // Pumps until `answer` arrived; false (with the error printed) on time-out.
  template <class R>
  bool await(const Answer<R>& answer, int count = 1);

  velmaro::QVKHelpCenterProvider provider() const {
    return velmaro::QVKHelpCenterProvider(session_.core());
  }

  Session& session_;
  Output& output_;
};

}  // namespace qvk
