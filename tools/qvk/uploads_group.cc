#include "tools/qvk/uploads_group.h"

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>

#include "tools/qvk/file_upload.h"
#include "tools/qvk/library_call.h"
#include "tools/qvk/transfer_wait.h"
#include "velmaro/attachments/qvk_upload_provider.h"

namespace qvk {

void UploadsGroup::declare(CLI::App& root) {
  auto* uploads = root.add_subcommand("uploads", "Upload files for requests and comments");
  uploads->require_subcommand(1);
  auto* add = command(uploads, "add", "Upload a file; prints its token", &UploadsGroup::add);
  add->add_option("FILE", file_, "The file to upload")->required();
  add->add_option("--name", name_, "The file name the service keeps (default: the file's)");
  add->add_option("--content-type", contentType_,
                  "The content type (default: by the file's extension)");
  command(uploads, "delete", "Delete an upload that no request names yet", &UploadsGroup::remove)
      ->add_option("TOKEN", token_, "The upload's token")
      ->required();
}

int UploadsGroup::add(CommandContext& context) const {
  auto outcome = FileUpload::upload(context, file_, name_, contentType_);
  if (outcome.interrupted) {
    context.output.errorText() << "cancelled\n";
    return TransferWait::kInterruptedStatus;
  }
  if (!outcome.answer) return context.output.error(outcome.answer.error());
  const auto& upload = *outcome.answer;
  const auto& attachment = upload.attachment;
  if (context.output.json()) {
    boost::json::object json{{"token", upload.uploadToken.value_or("")}};
    if (attachment) {
      json["file_name"] = attachment->filename.value_or("");
      json["content_url"] = attachment->contentURLString.value_or("");
      json["size"] = attachment->size.value_or(0);
    }
    context.output.document(json);
    return 0;
  }
  context.output.text() << upload.uploadToken.value_or("") << "\n";
  return 0;
}

int UploadsGroup::remove(CommandContext& context) const {
  velmaro::QVKUploadProvider provider(context.session.core());
  auto status = LibraryCall::await<std::string>(
      context.session, [&](auto cb) { provider.deleteUpload(token_, std::move(cb)); });
  if (!status) return context.output.error(status.error());
  if (context.output.json()) {
    context.output.document(boost::json::object{{"status", *status}});
  } else {
    context.output.text() << "deleted (" << *status << ")\n";
  }
  return 0;
}

}  // namespace qvk
