#include "emulator/sample_data.h"

#include <array>
#include <string>

#include <boost/json.hpp>

#include "emulator/database.h"
#include "emulator/http_support.h"
#include "emulator/request_store.h"

namespace qvk::emulator {

namespace json = boost::json;

namespace {

struct Translated {
  const char* en;
  const char* de;
};

struct ArticleSeed {
  Translated title;
  const char* labels;  // JSON array
};

constexpr std::array<Translated, 3> kCategories{{
    {"Getting Started", "Erste Schritte"},
    {"Account & Billing", "Konto & Abrechnung"},
    {"Troubleshooting", "Fehlerbehebung"},
}};

constexpr std::array<Translated, 6> kSections{{
    {"Setting up", "Einrichtung"},
    {"Using the app", "Die App verwenden"},
    {"Payments", "Zahlungen"},
    {"Subscriptions", "Abonnements"},
    {"Connection problems", "Verbindungsprobleme"},
    {"Q&A", "Fragen & Antworten"},
}};

// Seven per section, in section order. Titles are HTML as the service sends
// them, so some carry entities.
constexpr std::array<ArticleSeed, SampleData::kArticleCount> kArticles{{
    {{"Create your account", "Konto erstellen"}, R"(["setup","account"])"},
    {{"Install the app on your phone", "App auf dem Telefon installieren"},
     R"(["setup","mobile"])"},
    {{"Verify your email address", "E-Mail-Adresse bestätigen"}, R"(["setup"])"},
    {{"Choose a strong password", "Ein sicheres Passwort wählen"}, R"(["setup","security"])"},
    {{"Set up two-step sign-in", "Anmeldung in zwei Schritten einrichten"}, R"(["security"])"},
    {{"Import contacts &amp; calendars", "Kontakte &amp; Kalender importieren"}, R"(["setup"])"},
    {{"Your first project in 5 minutes", "Ihr erstes Projekt in 5 Minuten"}, R"(["setup","faq"])"},
    {{"Share a project with your team", "Ein Projekt mit dem Team teilen"}, R"(["sharing"])"},
    {{"Work offline", "Offline arbeiten"}, R"(["mobile","offline"])"},
    {{"Use keyboard shortcuts", "Tastenkürzel verwenden"}, R"(["tips"])"},
    {{"Attach files and photos", "Dateien und Fotos anhängen"}, R"(["attachments","mobile"])"},
    {{"Search everything", "Alles durchsuchen"}, R"(["tips"])"},
    {{"Notifications: what &amp; when", "Benachrichtigungen: was &amp; wann"},
     R"(["notifications"])"},
    {{"Dark mode and themes", "Dunkelmodus und Designs"}, R"(["tips"])"},
    {{"Accepted payment methods", "Akzeptierte Zahlungsmethoden"}, R"(["billing","payment"])"},
    {{"Update your credit card", "Kreditkarte aktualisieren"}, R"(["billing","payment"])"},
    {{"Download invoices", "Rechnungen herunterladen"}, R"(["billing"])"},
    {{"Why was my payment declined?", "Warum wurde meine Zahlung abgelehnt?"},
     R"(["billing","payment","faq"])"},
    {{"Refunds &amp; cancellations", "Erstattungen &amp; Kündigungen"}, R"(["billing","refund"])"},
    {{"Pay by bank transfer", "Per Überweisung bezahlen"}, R"(["payment"])"},
    {{"VAT and tax receipts", "Mehrwertsteuer und Steuerbelege"}, R"(["billing"])"},
    {{"Compare plans", "Tarife vergleichen"}, R"(["billing","plans"])"},
    {{"Upgrade or downgrade your plan", "Tarif wechseln"}, R"(["plans"])"},
    {{"Cancel your subscription", "Abonnement kündigen"}, R"(["plans","refund"])"},
    {{"Student &amp; non-profit discounts", "Rabatte für Studierende &amp; Vereine"},
     R"(["plans","faq"])"},
    {{"Free trial: what is included", "Kostenlose Testphase: was ist enthalten"}, R"(["plans"])"},
    {{"Change the billing owner", "Rechnungsinhaber ändern"}, R"(["billing"])"},
    {{"Annual vs. monthly billing", "Jährliche oder monatliche Abrechnung"},
     R"(["billing","plans"])"},
    {{"The app cannot connect", "Die App kann keine Verbindung herstellen"},
     R"(["connection","faq"])"},
    {{"Sync is slow", "Die Synchronisierung ist langsam"}, R"(["connection","sync"])"},
    {{"Error 503 &quot;Service unavailable&quot;", "Fehler 503 &quot;Dienst nicht verfügbar&quot;"},
     R"(["connection"])"},
    {{"Using the app behind a proxy", "Die App hinter einem Proxy verwenden"}, R"(["connection"])"},
    {{"Reset the app&#39;s cache", "Den Cache der App zurücksetzen"}, R"(["mobile","sync"])"},
    {{"Sign-in loops on Android", "Anmeldeschleife unter Android"}, R"(["android","login"])"},
    {{"Push notifications do not arrive", "Push-Mitteilungen kommen nicht an"},
     R"(["notifications","mobile"])"},
    {{"Q&amp;A: Is my data safe?", "F&amp;A: Sind meine Daten sicher?"}, R"(["security","faq"])"},
    {{"Q&amp;A: Where are your servers?", "F&amp;A: Wo stehen Ihre Server?"}, R"(["faq"])"},
    {{"Q&amp;A: Can I export my data?", "F&amp;A: Kann ich meine Daten exportieren?"},
     R"(["faq","export"])"},
    {{"Q&amp;A: How do I delete my account?", "F&amp;A: Wie lösche ich mein Konto?"},
     R"(["faq","account"])"},
    {{"Q&amp;A: Do you offer an API?", "F&amp;A: Gibt es eine API?"}, R"(["faq"])"},
    {{"Q&amp;A: Which languages are supported?", "F&amp;A: Welche Sprachen werden unterstützt?"},
     R"(["faq"])"},
    {{"Q&amp;A: How do I contact support?", "F&amp;A: Wie erreiche ich den Support?"},
     R"(["faq","contact"])"},
}};

// A 1x1 transparent PNG: the inline screenshots of the sample articles.
constexpr unsigned char kPixelPng[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x06, 0x00, 0x00,
    0x00, 0x1F, 0x15, 0xC4, 0x89, 0x00, 0x00, 0x00, 0x0A, 0x49, 0x44, 0x41, 0x54, 0x78,
    0x9C, 0x63, 0x00, 0x01, 0x00, 0x00, 0x05, 0x00, 0x01, 0x0D, 0x0A, 0x2D, 0xB4, 0x00,
    0x00, 0x00, 0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

constexpr std::time_t kContentEpoch = 1735894800;  // 2025-01-03T09:00:00Z

bool hasInlineImage(int i) {
  return i % 3 == 0;
}
std::int64_t inlineAttachmentId(int i) {
  return SampleData::kFirstAttachmentId + i;
}

std::string articleBody(int i, bool german) {
  const auto& seed = kArticles[static_cast<std::size_t>(i)];
  std::string title = german ? seed.title.de : seed.title.en;
  std::string body;
  if (german) {
    body = "<p>Diese Anleitung erklärt Schritt für Schritt: <strong>" + title +
           "</strong>.</p>\n<ol><li>Öffnen Sie die App.</li><li>Tippen Sie auf "
           "<em>Einstellungen</em>.</li><li>Folgen Sie den Hinweisen.</li></ol>\n"
           "<p>Erste Zeile<br>Zweite Zeile<br/>Dritte Zeile</p>\n<hr/>\n"
           "<p>Noch Fragen? Schreiben Sie uns &ndash; wir helfen gern.</p>";
  } else {
    body = "<p>This guide walks you through it: <strong>" + title +
           "</strong>.</p>\n<ol><li>Open the app.</li><li>Tap <em>Settings</em>.</li>"
           "<li>Follow the prompts &amp; confirm.</li></ol>\n"
           "<p>First line<br>Second line<br/>Third line</p>\n<hr/>\n"
           "<p>Still stuck? Contact us &ndash; we&#39;re happy to help.</p>";
  }
  if (hasInlineImage(i)) {
    body += "\n<p><img src=\"/hc/article_attachments/" + std::to_string(inlineAttachmentId(i)) +
            "/screenshot-" + std::to_string(i + 1) + ".png\" alt=\"Screenshot\" width=\"320\" " +
            "height=\"240\"></p>";
  }
  if (i % 7 == 4) body += "\n<pre><code>ping status.example.com</code></pre>";
  return body;
}

void insertUser(Database& db, std::int64_t id, const std::string& name, const std::string& email,
                bool agent, const std::string& photo) {
  db.execute(
      "INSERT INTO users (id, name, email, agent, photo_url, created_at) VALUES (?, ?, ?, ?, ?, ?)",
      {id, name, email, std::int64_t{agent ? 1 : 0},
       photo.empty() ? SqlValue(nullptr) : SqlValue(photo), http::isoTime(kContentEpoch)});
}

json::object ticketField(std::int64_t id, const char* type, const char* title, bool required,
                         json::value regexp, int position) {
  std::string t = title;
  return json::object{
      {"id", id},
      {"url", "/api/v2/ticket_fields/" + std::to_string(id) + ".json"},
      {"type", type},
      {"title", t},
      {"raw_title", t},
      {"description", "Please fill in: " + t},
      {"raw_description", "Please fill in: " + t},
      {"position", position},
      {"active", true},
      {"required", required},
      {"collapsed_for_agents", false},
      {"regexp_for_validation", std::move(regexp)},
      {"title_in_portal", t},
      {"raw_title_in_portal", t},
      {"visible_in_portal", true},
      {"editable_in_portal", true},
      {"required_in_portal", required},
      {"tag", nullptr},
      {"created_at", http::isoTime(kContentEpoch)},
      {"updated_at", http::isoTime(kContentEpoch)},
      {"removable", std::string(type) != "subject" && std::string(type) != "description"}};
}

json::array options(std::int64_t firstId,
                    std::initializer_list<std::pair<const char*, const char*>> items,
                    bool withDefault) {
  json::array out;
  std::int64_t id = firstId;
  bool first = true;
  for (const auto& [name, value] : items) {
    out.push_back(json::object{{"id", id++},
                               {"name", name},
                               {"raw_name", name},
                               {"value", value},
                               {"default", withDefault && first}});
    first = false;
  }
  return out;
}

json::array systemOptions(std::initializer_list<std::pair<const char*, const char*>> items) {
  json::array out;
  for (const auto& [name, value] : items)
    out.push_back(json::object{{"name", name}, {"value", value}});
  return out;
}

}  // namespace

void SampleData::seed(Database& db, bool sample) {
  auto guard = db.lock();
  if (db.queryOne("SELECT 1 FROM users LIMIT 1")) return;
  db.script("BEGIN");
  try {
    seedUsers(db, sample);
    if (sample) {
      seedHelpCenter(db);
      seedAttachments(db);
      seedTicketForms(db);
      seedRequests(db);
    }
    db.script("COMMIT");
  } catch (...) {
    db.script("ROLLBACK");
    throw;
  }
}

void SampleData::seedUsers(Database& db, bool sample) {
  insertUser(db, kFirstAgentId, "Ada Lindqvist", "ada@support.example.com", true,
             "/hc/article_attachments/" + std::to_string(kFirstAttachmentId + 100) + "/ada.png");
  insertUser(db, kFirstAgentId + 1, "Ben Okafor", "ben@support.example.com", true, "");
  if (sample) insertUser(db, kDemoUserId, "Demo User", "demo@example.com", false, "");
}

void SampleData::seedHelpCenter(Database& db) {
  const std::array<std::pair<const char*, bool>, 2> locales{{{"en-us", false}, {"de", true}}};
  for (const auto& [locale, german] : locales) {
    std::string loc = locale;
    for (std::size_t c = 0; c < kCategories.size(); ++c) {
      auto at = http::isoTime(kContentEpoch + static_cast<std::time_t>(c) * 3600);
      db.execute("INSERT INTO categories VALUES (?, ?, ?, ?, ?, ?, ?)",
                 {kFirstCategoryId + static_cast<std::int64_t>(c), loc,
                  std::string(german ? kCategories[c].de : kCategories[c].en),
                  std::string(german ? "Alles rund um " : "Everything about ") +
                      (german ? kCategories[c].de : kCategories[c].en),
                  static_cast<std::int64_t>(c + 1), at, at});
    }
    for (std::size_t s = 0; s < kSections.size(); ++s) {
      auto at = http::isoTime(kContentEpoch + static_cast<std::time_t>(s) * 3600);
      db.execute("INSERT INTO sections VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
                 {kFirstSectionId + static_cast<std::int64_t>(s), loc,
                  kFirstCategoryId + static_cast<std::int64_t>(s / 2),
                  std::string(german ? kSections[s].de : kSections[s].en),
                  std::string(german ? kSections[s].de : kSections[s].en) +
                      (german ? ": Anleitungen" : ": how-to guides"),
                  static_cast<std::int64_t>(s % 2 + 1), at, at});
    }
    for (int i = 0; i < kArticleCount; ++i) {
      const auto& a = kArticles[static_cast<std::size_t>(i)];
      auto created = kContentEpoch + static_cast<std::time_t>(i) * 86400 * 3 + (i % 5) * 3600;
      db.execute("INSERT INTO articles VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                 {kFirstArticleId + i, loc, kFirstSectionId + i / 7, kFirstAgentId + i % 2,
                  std::string(german ? a.title.de : a.title.en), articleBody(i, german),
                  std::int64_t{i % 7}, std::int64_t{i % 7 == 0 ? 1 : 0}, std::string(a.labels),
                  http::isoTime(created), http::isoTime(created + 86400 * (i % 4))});
    }
  }
}

void SampleData::seedAttachments(Database& db) {
  const std::string png(reinterpret_cast<const char*>(kPixelPng), sizeof kPixelPng);
  const auto at = http::isoTime(kContentEpoch);
  for (int i = 0; i < kArticleCount; ++i) {
    if (!hasInlineImage(i)) continue;
    db.execute("INSERT INTO article_attachments VALUES (?, ?, ?, 'image/png', 1, ?, ?)",
               {inlineAttachmentId(i), kFirstArticleId + i,
                "screenshot-" + std::to_string(i + 1) + ".png", Blob{png}, at});
  }
  // Downloads offered below a few articles.
  struct Download {
    int article;
    const char* name;
    const char* type;
    const char* text;
  };
  constexpr Download kDownloads[] = {
      {0, "getting-started-checklist.txt", "text/plain",
       "1. Create your account\n2. Install the app\n3. Verify your email\n"},
      {16, "invoice-sample.csv", "text/csv", "date,amount,currency\n2025-01-01,9.99,EUR\n"},
      {16, "invoice-guide.txt", "text/plain", "Invoices are listed under Settings > Billing.\n"},
      {29, "network-diagnostics.txt", "text/plain", "ping, traceroute and proxy settings\n"},
  };
  std::int64_t id = kFirstAttachmentId + 50;
  for (const auto& d : kDownloads) {
    db.execute("INSERT INTO article_attachments VALUES (?, ?, ?, ?, 0, ?, ?)",
               {id++, kFirstArticleId + d.article, std::string(d.name), std::string(d.type),
                Blob{d.text}, at});
  }
  // The avatar of the first agent.
  db.execute("INSERT INTO article_attachments VALUES (?, 0, 'ada.png', 'image/png', 1, ?, ?)",
             {kFirstAttachmentId + 100, Blob{png}, at});
}

void SampleData::seedTicketForms(Database& db) {
  constexpr std::int64_t f = 360000050001;
  std::vector<json::object> fields{
      ticketField(f, "subject", "Subject", true, nullptr, 1),
      ticketField(f + 1, "description", "Description", true, nullptr, 2),
      ticketField(f + 2, "priority", "Priority", false, nullptr, 3),
      ticketField(f + 3, "tickettype", "Type", false, nullptr, 4),
      // Braces that are repetition counts.
      ticketField(f + 4, "regexp", "Order number", true, R"(^[A-Z]{3}-\d{4,6}$)", 5),
      ticketField(f + 5, "tagger", "Device", false, nullptr, 6),
      ticketField(f + 6, "multiselect", "Affected platforms", false, nullptr, 7),
      ticketField(f + 7, "textarea", "Steps to reproduce", true, nullptr, 8),
      ticketField(f + 8, "text", "App version", false, nullptr, 9),
      // Literal braces around the code, a count after it.
      ticketField(f + 9, "regexp", "Reference code", false, R"(^{[A-Z]+}-\d{3}$)", 10),
      ticketField(f + 10, "integer", "Number of users", false, nullptr, 11),
      ticketField(f + 11, "decimal", "Monthly budget", false, nullptr, 12),
      ticketField(f + 12, "date", "Date noticed", false, nullptr, 13),
      ticketField(f + 13, "partialcreditcard", "Card (last digits)", false, nullptr, 14),
      ticketField(f + 14, "checkbox", "I agree to be contacted", false, nullptr, 15),
      ticketField(f + 15, "status", "Status", false, nullptr, 16),
  };
  fields[2]["system_field_options"] =
      systemOptions({{"Low", "low"}, {"Normal", "normal"}, {"High", "high"}, {"Urgent", "urgent"}});
  fields[3]["system_field_options"] = systemOptions({{"Question", "question"},
                                                     {"Incident", "incident"},
                                                     {"Problem", "problem"},
                                                     {"Task", "task"}});
  fields[5]["custom_field_options"] = options(
      360000070001,
      {{"Phone", "device_phone"}, {"Tablet", "device_tablet"}, {"Desktop", "device_desktop"}},
      true);
  fields[6]["custom_field_options"] = options(
      360000070011,
      {{"iOS", "platform_ios"}, {"Android", "platform_android"}, {"Web", "platform_web"}}, false);
  fields[15]["system_field_options"] =
      systemOptions({{"Open", "open"}, {"Pending", "pending"}, {"Solved", "solved"}});
  for (const auto& field : fields)
    db.execute("INSERT INTO ticket_fields VALUES (?, ?)",
               {field.at("id").as_int64(), json::serialize(field)});
  auto ids = [&](std::initializer_list<int> offsets) {
    json::array out;
    for (int o : offsets) out.emplace_back(f + o);
    return json::serialize(out);
  };
  db.execute("INSERT INTO ticket_forms VALUES (?, 'Contact support', 'Contact support', 1, 1, ?)",
             {kContactFormId, ids({0, 1, 2, 3, 4, 5, 6})});
  db.execute(
      "INSERT INTO ticket_forms VALUES (?, 'Report a bug', 'Report a bug in the app', 2, 1, ?)",
      {kBugFormId, ids({0, 1, 7, 8, 9, 10, 11, 12, 13, 14, 15, 6})});
  db.execute("INSERT INTO ticket_forms VALUES (?, 'Legacy form', 'Legacy form', 3, 0, ?)",
             {kInactiveFormId, ids({0, 1})});
}

void SampleData::seedRequests(Database& db) {
  struct Comment {
    std::int64_t author;
    const char* at;
    const char* body;
  };
  struct Seed {
    std::int64_t id;
    const char* status;
    const char* subject;
    std::vector<Comment> comments;
  };
  const std::int64_t ada = kFirstAgentId, ben = kFirstAgentId + 1, demo = kDemoUserId;
  const std::vector<Seed> seeds{
      {101,
       "open",
       "The app cannot sync my projects",
       {{demo, "2026-01-05T10:00:00Z",
         "Since yesterday my projects no longer sync.\nI use the phone app."},
        {ada, "2026-01-05T11:30:00Z",
         "Thanks for reaching out! Could you tell us your app version?"},
        {demo, "2026-01-05T12:10:00Z", "It is version 4.2.1."},
        {ben, "2026-01-06T08:45:00Z",
         "We fixed a sync issue in 4.2.2. Please update & try again."}}},
      {102,
       "solved",
       "Invoice for December is missing",
       {{demo, "2025-12-20T09:00:00Z", "I cannot find my invoice for December."},
        {ada, "2025-12-20T13:00:00Z", "It is now under Settings > Billing > Invoices."}}},
      {103,
       "new",
       "How do I export my data?",
       {{demo, "2026-01-10T16:20:00Z", "Is there a way to export all my projects as CSV?"}}},
  };
  std::int64_t commentId = 5001;
  for (const auto& s : seeds) {
    const auto& first = s.comments.front();
    const auto& last = s.comments.back();
    db.execute(
        "INSERT INTO requests (id, requester_id, status, subject, description, type, "
        "ticket_form_id, tags, custom_fields, created_at, updated_at, public_updated_at) "
        "VALUES (?, ?, ?, ?, ?, 'question', ?, '[\"mobile\"]', ?, ?, ?, ?)",
        {s.id, demo, std::string(s.status), std::string(s.subject), std::string(first.body),
         s.id == 101 ? SqlValue(kContactFormId) : SqlValue(nullptr),
         s.id == 101 ? std::string(R"([{"id":360000050005,"value":"ABC-12345"}])")
                     : std::string("[]"),
         std::string(first.at), std::string(last.at), std::string(last.at)});
    for (const auto& c : s.comments) {
      db.execute("INSERT INTO comments VALUES (?, ?, ?, ?, ?, ?)",
                 {commentId++, s.id, c.author, std::string(c.body), htmlFromPlainText(c.body),
                  std::string(c.at)});
    }
  }
}

}  // namespace qvk::emulator
