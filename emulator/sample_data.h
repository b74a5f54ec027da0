#pragma once

namespace qvk::emulator {

class Database;

// The content a fresh emulator starts with, generated in code so that every
// run (and every test) sees the same ids, texts and times.
class SampleData {
 public:
  // Seeds an empty database: always the support agents; with `sample` also
  // the demo user and their requests, two locales of Help Center content
  // (categories, sections, articles with labels, attachments) and ticket
  // forms. A database that already has users (a --db file from an earlier
  // run) is left as it is.
  static void seed(Database& db, bool sample);

  static constexpr long long kFirstAgentId = 1001;
  static constexpr long long kDemoUserId = 2001;
  static constexpr long long kFirstCategoryId = 360000010001;
  static constexpr long long kFirstSectionId = 360000020001;
  static constexpr long long kFirstArticleId = 360000030001;
  static constexpr long long kFirstAttachmentId = 360000060001;
  static constexpr long long kContactFormId = 360000040001;
  static constexpr long long kBugFormId = 360000040002;
  static constexpr long long kInactiveFormId = 360000040003;
  static constexpr int kArticleCount = 42;

 private:
  static void seedUsers(Database& db, bool sample);
  static void seedHelpCenter(Database& db);
  static void seedAttachments(Database& db);
  static void seedTicketForms(Database& db);
  static void seedRequests(Database& db);
};

}  // namespace qvk::emulator
