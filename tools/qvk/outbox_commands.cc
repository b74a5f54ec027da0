#include "tools/qvk/outbox_commands.h"

#include <filesystem>

#include "tools/qvk/file_upload.h"
#include "tools/qvk/table.h"
#include "velmaro/outbox/outbox_errors.h"
#include "velmaro/util/qvk_date_util.h"

namespace qvk {

using velmaro::OutboxEntry;
using velmaro::RequestOutbox;

namespace {

Table entriesTable(const std::vector<OutboxEntry>& entries) {
  Table table({{"ID", 8, true},
               {"KIND", 8},
               {"REQUEST", 10},
               {"STATE", 8},
               {"TRIES", 5, true},
               {"KEPT AT", 20},
               {"TEXT", 40},
               {"LAST ERROR", 50}},
              "waiting call", "waiting calls");
  for (const auto& entry : entries) {
    table.addRow({std::to_string(entry.id), std::string(OutboxEntry::name(entry.kind)),
                  entry.requestId, std::string(OutboxEntry::name(entry.state)),
                  std::to_string(entry.attempts),
                  velmaro::QVKDateUtil::stringFromDate(entry.queuedAt),
                  entry.kind == OutboxEntry::Kind::request && !entry.subject.empty()
                      ? entry.subject + ": " + entry.text
                      : entry.text,
                  entry.lastError});
  }
  return table;
}

std::optional<OutboxEntry> entryWithId(const RequestOutbox& outbox, std::int64_t id) {
  for (auto& entry : outbox.entries()) {
    if (entry.id == id) return entry;
  }
  return std::nullopt;
}

}  // namespace

std::shared_ptr<RequestOutbox> OutboxCommands::openAndSend(CommandContext& context) {
  auto outbox = RequestOutbox::open(context.session.core());
  if (outbox->count() == 0) return outbox;
  auto report = std::make_shared<std::optional<RequestOutbox::Report>>();
  outbox->sendWaiting([report](RequestOutbox::Report sent) { *report = sent; });
  if (!context.session.waitUntil([&] { return report->has_value(); })) return outbox;
  const auto& sent = **report;
  if (sent.sent + sent.foundSent + sent.refused > 0) {
    context.output.errorText() << "outbox: sent " << sent.sent << ", found already sent "
                               << sent.foundSent << ", refused " << sent.refused << "; "
                               << sent.waiting << " still waiting\n";
  }
  return outbox;
}

std::optional<int> OutboxCommands::reportQueued(CommandContext& context,
                                                const RequestOutbox& outbox,
                                                const quorvel::platform::Error& error) {
  if (!velmaro::OutboxErrors::isQueued(error)) return std::nullopt;
  const auto* id = error.userInfo.if_contains(velmaro::OutboxErrors::kEntryIdKey);
  const auto entryId = id != nullptr && id->is_int64() ? id->as_int64() : 0;
  const auto entry = entryWithId(outbox, entryId);
  if (context.output.json()) {
    context.output.document(
        boost::json::object{{"queued", entry ? boost::json::value(entry->toJson()) : nullptr}});
    return 0;
  }
  context.output.text() << "queued " << entryId << "\n";
  context.output.text().flush();
  if (entry && entry->state == OutboxEntry::State::unsure) {
    context.output.errorText() << "No answer came (" << entry->lastError
                               << "); kept in the outbox, and sent again only if the service "
                                  "turns out not to have it.";
  } else {
    context.output.errorText() << "The service cannot be reached; kept in the outbox.";
  }
  context.output.errorText() << " `qvk requests outbox --send`, or any later create or comment "
                                "with --queue-offline, sends what waits.\n";
  return 0;
}

quorvel::platform::Result<velmaro::QVKUploadResponse> OutboxCommands::keptUpload(
    RequestOutbox& outbox, const std::string& path) {
  const auto name = std::filesystem::path(path).filename().string();
  auto token = outbox.keepFile(path, name, FileUpload::contentTypeFor(path));
  if (!token) return token.error();
  velmaro::QVKUploadResponse upload;
  upload.uploadToken = token.value();
  return upload;
}

int OutboxCommands::list(CommandContext& context, bool send) {
  const auto outbox = send ? openAndSend(context) : RequestOutbox::open(context.session.core());
  const auto entries = outbox->entries();
  if (context.output.json()) {
    boost::json::array list;
    for (const auto& entry : entries) list.push_back(entry.toJson());
    context.output.document(boost::json::object{{"outbox", std::move(list)}});
    return 0;
  }
  context.output.table(entriesTable(entries));
  return 0;
}

}  // namespace qvk
