#pragma once

#include "tools/qvk/command_group.h"
#include "tools/qvk/hc_arguments.h"

namespace qvk {

// `qvk hc ...`: each command calls one operation of the Help Center provider
// (the convenience form when no option narrows it), waits for the answer on
// the session's main queue and prints it: a table, article cards or an
// outline, or with --json the records themselves.
class HcGroup final : public CommandGroup {
 public:
  void declare(CLI::App& root) override;

  const HcArguments& arguments() const { return arguments_; }

 private:
  // Arguments and options that several commands share.
  void id(CLI::App* command, const char* name, const char* description);
  void textId(CLI::App* command, const char* name, const char* description);
  void query(CLI::App* command);
  void labelOption(CLI::App* command);
  void paging(CLI::App* command);

  void declareBrowsing(CLI::App* hc);
  void declareOverview(CLI::App* hc);
  void declareSearching(CLI::App* hc);
  void declareAttachmentsAndVotes(CLI::App* hc);

  int categories(CommandContext& context) const;
  int category(CommandContext& context) const;
  int sections(CommandContext& context) const;
  int section(CommandContext& context) const;
  int sectionArticles(CommandContext& context) const;
  int articlesByLabels(CommandContext& context) const;
  int article(CommandContext& context) const;
  int flat(CommandContext& context) const;
  int overview(CommandContext& context) const;
  int search(CommandContext& context) const;
  int searchQuery(CommandContext& context) const;
  int suggest(CommandContext& context) const;
  int attachments(CommandContext& context) const;
  int upvote(CommandContext& context) const;
  int downvote(CommandContext& context) const;
  int unvote(CommandContext& context) const;

  HcArguments arguments_;
};

}  // namespace qvk
