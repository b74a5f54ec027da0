#include "tools/qvk/requests_group.h"

#include <memory>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <boost/json/parse.hpp>

#include "quorvel/platform/notification_center.h"
#include "tools/qvk/client_errors.h"
#include "tools/qvk/field_argument.h"
#include "tools/qvk/int64_argument.h"
#include "tools/qvk/library_call.h"
#include "tools/qvk/outbox_commands.h"
#include "tools/qvk/request_attachments.h"
#include "tools/qvk/requests_tables.h"
#include "velmaro/core/support.h"
#include "velmaro/requests/qvk_request_provider.h"
#include "velmaro/requests/request_notifications.h"
#include "velmaro/storage/request_storage.h"
#include "velmaro/util/qvk_date_util.h"

namespace qvk {

namespace {

using velmaro::QVKCommentWithUser;
using velmaro::QVKRequest;
using velmaro::QVKRequestProvider;
using velmaro::QVKUploadResponse;
using velmaro::RequestUpdates;

template <class T>
boost::json::value listJson(const std::optional<std::vector<T>>& records) {
  if (!records) return nullptr;
  boost::json::array list;
  for (const auto& record : *records) list.push_back(record.toJson());
  return list;
}

// A comment's files as the service names them. The record's own JSON leaves
// them out (the request store does not keep them); a user wants to see them.
boost::json::array attachmentsJson(const velmaro::QVKComment& comment) {
  boost::json::array list;
  for (const auto& attachment :
       comment.attachments.value_or(std::vector<velmaro::QVKAttachment>{})) {
    boost::json::object json;
    if (attachment.attachmentId) json["id"] = *attachment.attachmentId;
    if (attachment.filename) json["file_name"] = *attachment.filename;
    if (attachment.contentURLString) json["content_url"] = *attachment.contentURLString;
    if (attachment.contentType) json["content_type"] = *attachment.contentType;
    if (attachment.size) json["size"] = *attachment.size;
    list.push_back(std::move(json));
  }
  return list;
}

// A comment with its files and its author under "user" (null when the
// author is unknown).
boost::json::object commentJson(const velmaro::QVKComment& comment,
                                const std::optional<velmaro::QVKSupportUser>& user) {
  auto json = comment.toJson();
  json["attachments"] = attachmentsJson(comment);
  json["user"] = user ? boost::json::value(user->toJson()) : nullptr;
  return json;
}

std::optional<RequestUpdates> storedUpdates(const CommandContext& context) {
  if (!context.session.core()) return std::nullopt;
  auto storage = velmaro::RequestStorage::initWithQuorvel(*context.session.core());
  return RequestUpdates::calculateRequestUpdates(storage.getRequests());
}

std::string timeCheck(const std::string& text) {
  if (velmaro::QVKDateUtil::dateForJsonString(text)) return {};
  return "expected an ISO-8601 UTC time such as 2026-01-02T03:04:05Z: " + text;
}

// The request of a create answer, as the provider announces it in its
// success notification; from the answer's own body should the notification
// not have come.
QVKRequest createdRequest(const std::shared_ptr<std::optional<QVKRequest>>& announced,
                          const velmaro::QVKDispatcherResponse& response) {
  if (*announced) return **announced;
  boost::system::error_code error;
  auto body = boost::json::parse(response.data.value_or(""), error);
  const auto* request = error ? nullptr : body.as_object().if_contains("request");
  if (request == nullptr || !request->is_object()) return {};
  return QVKRequest::initWithDict(request->get_object());
}

velmaro::QVKCreateRequest createRequest(const RequestsArguments& arguments,
                                        std::optional<std::vector<QVKUploadResponse>> uploads) {
  velmaro::QVKCreateRequest request;
  request.subject = arguments.subject;
  request.requestDescription = arguments.description;
  request.tags = arguments.tags.value_or(std::vector<std::string>{});
  // No --attach and no --token: the attachment list stays unset, and the
  // body has no "uploads".
  request.attachmentsAlias = std::move(uploads);
  for (const auto& field : arguments.fields.value_or(std::vector<std::string>{})) {
    // Checked on the command line already.
    if (auto parsed = FieldArgument::parse(field)) request.customFields.push_back(*parsed);
  }
  request.ticketFormId = arguments.formId;
  return request;
}

// The stored counters of one request after a mark.
int printStored(CommandContext& context, const velmaro::RequestForStorage& record,
                const char* what) {
  if (context.output.json()) {
    context.output.document(boost::json::object{{"requestId", record.requestId()},
                                                {"commentCount", record.commentCount()},
                                                {"readCommentCount", record.readCommentCount()}});
  } else {
    context.output.text() << "Request " << record.requestId() << " marked " << what << " ("
                          << record.readCommentCount() << " of " << record.commentCount()
                          << " comments read)\n";
    context.output.text().flush();
  }
  return 0;
}

}  // namespace

void RequestsGroup::declare(CLI::App& root) {
  auto* requests = root.add_subcommand("requests",
                                       "The user's support requests: list, read, create, comment, "
                                       "unread counters");
  requests->require_subcommand(1);
  declareReading(requests);
  declareWriting(requests);
  declareReadTracking(requests);
}

void RequestsGroup::requestId(CLI::App* command) {
  command->add_option("ID", arguments_.requestId, "Request id")->required();
}

void RequestsGroup::tokens(CLI::App* command) {
  command
      ->add_option("--attach", arguments_.attachFiles,
                   "A file to upload and attach, before any --token (repeatable)")
      ->type_name("FILE")
      ->allow_extra_args(false)
      ->check(CLI::ExistingFile);
  command->add_option("--token", arguments_.tokens, "An upload token to attach (repeatable)")
      ->type_name("TOKEN")
      ->allow_extra_args(false);
  command->add_flag("--queue-offline", arguments_.queueOffline,
                    "Keep it in the outbox when the service cannot be reached (sent later, "
                    "once); first sends what already waits there");
}

void RequestsGroup::declareReading(CLI::App* requests) {
  command(requests, "list", "List the user's requests", &RequestsGroup::list)
      ->add_option("--status", arguments_.status,
                   "Only these statuses, comma-separated as the service takes them "
                   "(open,pending)")
      ->type_name("LIST");
  requestId(command(requests, "show", "Show one request", &RequestsGroup::show));

  auto* comments =
      command(requests, "comments", "List a request's comments", &RequestsGroup::comments);
  requestId(comments);
  auto* since = comments
                    ->add_option("--since", arguments_.since,
                                 "Only comments since this UTC time (2026-01-02T03:04:05Z)")
                    ->type_name("TIME")
                    ->check(timeCheck);
  comments->add_flag("--agent-only", arguments_.agentOnly, "Only agents' comments (with --since)")
      ->needs(since);
}

void RequestsGroup::declareWriting(CLI::App* requests) {
  auto* create = command(requests, "create", "Create a request", &RequestsGroup::create);
  create->add_option("--subject", arguments_.subject, "Subject")->type_name("S");
  create->add_option("--description", arguments_.description, "Description (the first comment)")
      ->type_name("D");
  create->add_option("--tag", arguments_.tags, "A tag (repeatable)")
      ->type_name("T")
      ->allow_extra_args(false);
  create
      ->add_option("--field", arguments_.fields,
                   "A custom field value, JSON when it parses as JSON (repeatable)")
      ->type_name("ID=VALUE")
      ->allow_extra_args(false)
      ->check(FieldArgument::check);
  create->add_option("--form", arguments_.formId, "Ticket form id")
      ->type_name("ID")
      ->check(Int64Argument::inRange());
  tokens(create);

  auto* comment =
      command(requests, "comment", "Add a comment to a request", &RequestsGroup::comment);
  requestId(comment);
  comment->add_option("TEXT", arguments_.text, "The comment")->required();
  tokens(comment);
}

void RequestsGroup::declareReadTracking(CLI::App* requests) {
  command(requests, "updates", "Unread comments per request, from the device's counters",
          &RequestsGroup::updates);
  auto* markRead =
      command(requests, "mark-read", "Mark a request's comments read", &RequestsGroup::markRead);
  requestId(markRead);
  markRead->add_option("COUNT", arguments_.commentCount, "Comments read")
      ->required()
      ->check(CLI::NonNegativeNumber)
      ->check(Int64Argument::inRange());
  requestId(command(requests, "mark-unread", "Mark a request unread", &RequestsGroup::markUnread));
  requestId(command(requests, "refresh", "Signal news on a request, as a push would",
                    &RequestsGroup::refresh));
  command(requests, "outbox", "Requests and comments kept to be sent later", &RequestsGroup::outbox)
      ->add_flag("--send", arguments_.sendOutbox, "Send what waits first, oldest first");
}

int RequestsGroup::list(CommandContext& context) const {
  QVKRequestProvider provider(context.session.core());
  auto answer =
      LibraryCall::await<velmaro::QVKRequestsWithCommentingAgents>(context.session, [&](auto cb) {
        if (arguments_.status) {
          provider.getRequestsByStatus(arguments_.status, std::move(cb));
        } else {
          provider.getAllRequests(std::move(cb));
        }
      });
  if (!answer) return context.output.error(answer.error());
  if (context.output.json()) {
    context.output.document(
        boost::json::object{{"requests", listJson(answer->requests)},
                            {"commentingAgents", listJson(answer->commentingAgents)}});
    return 0;
  }
  context.output.table(RequestsTables::of(answer->requests.value_or(std::vector<QVKRequest>{}),
                                          storedUpdates(context)));
  return 0;
}

int RequestsGroup::show(CommandContext& context) const {
  QVKRequestProvider provider(context.session.core());
  auto request = LibraryCall::await<QVKRequest>(context.session, [&](auto cb) {
    provider.getRequestById(arguments_.requestId, std::move(cb));
  });
  if (!request) return context.output.error(request.error());
  if (context.output.json()) {
    context.output.document(boost::json::object{{"request", request->toJson()}});
  } else {
    context.output.table(RequestsTables::of({*request}, storedUpdates(context)));
  }
  return 0;
}

int RequestsGroup::comments(CommandContext& context) const {
  QVKRequestProvider provider(context.session.core());
  auto comments =
      LibraryCall::await<std::vector<QVKCommentWithUser>>(context.session, [&](auto cb) {
        if (!arguments_.since) {
          provider.getCommentsWithRequestId(arguments_.requestId, std::move(cb));
          return;
        }
        provider.getCommentsWithRequestId(
            arguments_.requestId, velmaro::QVKDateUtil::dateForJsonString(*arguments_.since),
            arguments_.agentOnly, std::move(cb));
      });
  if (!comments) return context.output.error(comments.error());
  if (!context.output.json()) {
    context.output.table(RequestsTables::of(*comments));
    return 0;
  }
  boost::json::array list;
  for (const auto& comment : *comments) {
    list.push_back(commentJson(comment.comment(), comment.user()));
  }
  context.output.document(boost::json::object{{"comments", std::move(list)}});
  return 0;
}

int RequestsGroup::create(CommandContext& context) const {
  QVKRequestProvider provider(context.session.core());
  const auto outbox = outboxFor(context, provider);
  auto attached = RequestAttachments::collect(context, arguments_, outbox.get());
  if (attached.failed) return *attached.failed;
  // The success notification is posted on the main queue before the
  // callback's task runs there, so it has been seen once the answer is in.
  auto announced = std::make_shared<std::optional<QVKRequest>>();
  auto registration = quorvel::platform::NotificationCenter::defaultCenter().observe(
      velmaro::QVKAPI_RequestSubmissionSuccess, nullptr,
      [announced](const quorvel::platform::Notification& notification) {
        const auto found = notification.userInfo.find("request");
        if (found == notification.userInfo.end()) return;
        if (const auto* request = std::any_cast<QVKRequest>(&found->second)) *announced = *request;
      });
  auto response = LibraryCall::await<velmaro::QVKDispatcherResponse>(context.session, [&](auto cb) {
    provider.createRequest(createRequest(arguments_, attached.uploads), std::move(cb));
  });
  if (!response) {
    if (outbox) {
      if (auto status = OutboxCommands::reportQueued(context, *outbox, response.error()))
        return *status;
    }
    return context.output.error(response.error());
  }
  const auto request = createdRequest(announced, *response);
  if (context.output.json()) {
    context.output.document(boost::json::object{{"request", request.toJson()}});
  } else {
    context.output.text() << request.requestId.value_or("") << "\n";
    context.output.text().flush();
  }
  return 0;
}

int RequestsGroup::comment(CommandContext& context) const {
  QVKRequestProvider provider(context.session.core());
  const auto outbox = outboxFor(context, provider);
  auto attached = RequestAttachments::collect(context, arguments_, outbox.get());
  if (attached.failed) return *attached.failed;
  auto comment = LibraryCall::await<velmaro::QVKComment>(context.session, [&](auto cb) {
    if (attached.uploads) {
      provider.addComment(arguments_.text, arguments_.requestId, attached.uploads, std::move(cb));
    } else {
      provider.addComment(arguments_.text, arguments_.requestId, std::move(cb));
    }
  });
  if (!comment) {
    if (outbox) {
      if (auto status = OutboxCommands::reportQueued(context, *outbox, comment.error()))
        return *status;
    }
    return context.output.error(comment.error());
  }
  if (context.output.json()) {
    context.output.document(boost::json::object{{"comment", commentJson(*comment, std::nullopt)}});
  } else {
    context.output.table(
        RequestsTables::of(std::vector<QVKCommentWithUser>{{*comment, std::nullopt}}));
  }
  return 0;
}

int RequestsGroup::updates(CommandContext& context) const {
  QVKRequestProvider provider(context.session.core());
  Answer<RequestUpdates> answer;
  provider.getUpdatesForDevice(answer.valueCallback());
  if (!context.session.waitUntil([&] { return answer.arrived(); })) {
    return context.output.error(ClientErrors::noAnswer(context.session.answerTimeout()));
  }
  const auto& updates = answer.value();
  if (context.output.json()) {
    if (!updates) {
      context.output.document(boost::json::object{{"requestUpdates", nullptr}});
      return 0;
    }
    boost::json::object perRequest;
    for (const auto& [id, count] : updates->requestUpdates()) perRequest[id] = count;
    context.output.document(boost::json::object{{"requestUpdates", std::move(perRequest)},
                                                {"totalUpdates", updates->totalUpdates()}});
    return 0;
  }
  if (!updates) {
    // The library answers nothing when conversations are off, and when the
    // counters were stale and the fetch that refreshed them found requests.
    context.output.text() << "No updates answered (the counters may just have been refreshed: "
                             "ask again)\n";
  } else {
    RequestsTables::of(*updates).print(context.output.text());
    context.output.text() << updates->totalUpdates() << " unread in total\n";
  }
  context.output.text().flush();
  return 0;
}

int RequestsGroup::markRead(CommandContext& context) const {
  const auto id = arguments_.requestId.value_or("");
  auto storage = velmaro::RequestStorage::initWithQuorvel(*context.session.core());
  if (!storage.getRequestForId(id)) return context.output.error(ClientErrors::notStored(id));
  QVKRequestProvider(context.session.core()).markRequestAsRead(id, arguments_.commentCount);
  return printStored(context, *storage.getRequestForId(id), "read");
}

int RequestsGroup::markUnread(CommandContext& context) const {
  const auto id = arguments_.requestId.value_or("");
  auto storage = velmaro::RequestStorage::initWithQuorvel(*context.session.core());
  if (!storage.getRequestForId(id)) return context.output.error(ClientErrors::notStored(id));
  QVKRequestProvider(context.session.core()).markRequestAsUnread(id);
  return printStored(context, *storage.getRequestForId(id), "unread");
}

// qvk registers no action handler, so the signal marks the request unread:
// a host's push handling can be tried from a shell.
int RequestsGroup::refresh(CommandContext& context) const {
  const auto id = arguments_.requestId.value_or("");
  if (velmaro::Support::instance()->refreshRequest(id)) return 0;  // an open view took it
  const auto stored =
      velmaro::RequestStorage::initWithQuorvel(*context.session.core()).getRequestForId(id);
  if (!stored) return context.output.error(ClientErrors::notStored(id));
  return printStored(context, *stored, "unread");
}

std::shared_ptr<velmaro::RequestOutbox> RequestsGroup::outboxFor(
    CommandContext& context, velmaro::QVKRequestProvider& provider) const {
  if (!arguments_.queueOffline) return nullptr;
  auto outbox = OutboxCommands::openAndSend(context);
  provider.setOutbox(outbox);
  return outbox;
}

int RequestsGroup::outbox(CommandContext& context) const {
  return OutboxCommands::list(context, arguments_.sendOutbox);
}

}  // namespace qvk
