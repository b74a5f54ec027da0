#include "tools/qvk/attachments_group.h"

#include <filesystem>
#include <limits>

#include <CLI/CLI.hpp>
#include <boost/json/object.hpp>

#include "tools/qvk/answer.h"
#include "tools/qvk/client_errors.h"
#include "tools/qvk/library_call.h"
#include "tools/qvk/transfer_wait.h"
#include "velmaro/attachments/qvk_attachment_provider.h"

namespace qvk {

void AttachmentsGroup::declare(CLI::App& root) {
  auto* attachments = root.add_subcommand("attachments", "Download attachments and avatars");
  attachments->require_subcommand(1);
  auto* get = command(attachments, "get", "Download an attachment", &AttachmentsGroup::get);
  get->add_option("URL", url_, "The attachment's content URL")->required();
  get->add_option("-o,--output", output_, "Write it to this file instead of standard output");
  command(attachments, "avatar", "Download an avatar and show its size", &AttachmentsGroup::avatar)
      ->add_option("URL", url_, "The avatar's URL")
      ->required();
}

int AttachmentsGroup::get(CommandContext& context) const {
  if (output_) return saveTo(context, *output_);
  velmaro::QVKAttachmentProvider provider(context.session.core());
  auto bytes = LibraryCall::await<std::string>(
      context.session, [&](auto cb) { provider.getAttachmentForUrl(url_, std::move(cb)); });
  if (!bytes) return context.output.error(bytes.error());
  if (context.output.json()) {
    context.output.document(boost::json::object{{"size", bytes->size()}});
  } else {
    context.output.text().write(bytes->data(), static_cast<std::streamsize>(bytes->size()));
    context.output.text().flush();
  }
  return 0;
}

int AttachmentsGroup::saveTo(CommandContext& context, const std::string& path) const {
  velmaro::QVKAttachmentProvider provider(context.session.core());
  TransferWait transfer(context, path);
  Answer<std::string> answer;
  // Written to a file, a download may be as large as the disk allows.
  velmaro::QVKAttachmentProvider::DownloadOptions options{transfer.progress(),
                                                          std::numeric_limits<std::size_t>::max()};
  auto handle = provider.downloadAttachment(url_, path, options, answer.callback());
  transfer.wait(handle, [&] { return answer.arrived(); });
  if (transfer.interrupted() && answer.error()) {
    context.output.errorText() << "cancelled\n";
    return TransferWait::kInterruptedStatus;
  }
  if (!answer.arrived())
    return context.output.error(ClientErrors::noAnswer(std::chrono::hours(24)));
  if (answer.error()) return context.output.error(*answer.error());
  std::error_code ec;
  const auto size = std::filesystem::file_size(path, ec);
  if (context.output.json()) {
    context.output.document(boost::json::object{{"file", path}, {"size", ec ? 0 : size}});
  } else {
    context.output.text() << "saved " << (ec ? 0 : size) << " bytes to " << path << "\n";
  }
  return 0;
}

int AttachmentsGroup::avatar(CommandContext& context) const {
  velmaro::QVKAttachmentProvider provider(context.session.core());
  auto image = LibraryCall::await<velmaro::QVKAttachmentProvider::Image>(
      context.session, [&](auto cb) { provider.getAvatarForUrl(url_, std::move(cb)); });
  if (!image) return context.output.error(image.error());
  // No image and no error: the bytes were not a picture.
  if (image->width == 0) return context.output.error(ClientErrors::noImage());
  if (context.output.json()) {
    context.output.document(
        boost::json::object{{"width", image->width}, {"height", image->height}});
  } else {
    context.output.text() << image->width << " x " << image->height << "\n";
  }
  return 0;
}

}  // namespace qvk
