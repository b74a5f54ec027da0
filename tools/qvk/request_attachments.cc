#include "tools/qvk/request_attachments.h"

#include "tools/qvk/file_upload.h"
#include "tools/qvk/outbox_commands.h"
#include "tools/qvk/transfer_wait.h"
#include "velmaro/outbox/outbox_errors.h"

namespace qvk {

RequestAttachments::Collected RequestAttachments::collect(CommandContext& context,
                                                          const RequestsArguments& arguments,
                                                          velmaro::RequestOutbox* outbox) {
  Collected result;
  if (!arguments.attachFiles && !arguments.tokens) return result;
  result.uploads.emplace();
  for (const auto& file : arguments.attachFiles.value_or(std::vector<std::string>{})) {
    auto outcome = FileUpload::upload(context, file, std::nullopt, std::nullopt);
    if (outcome.interrupted) {
      context.output.errorText() << "cancelled\n";
      result.failed = TransferWait::kInterruptedStatus;
      return result;
    }
    if (!outcome.answer && outbox != nullptr &&
        velmaro::OutboxErrors::classify(outcome.answer.error()) !=
            velmaro::OutboxErrors::Failure::final) {
      outcome.answer = OutboxCommands::keptUpload(*outbox, file);
    }
    if (!outcome.answer) {
      result.failed = context.output.error(outcome.answer.error());
      return result;
    }
    result.uploads->push_back(*outcome.answer);
  }
  for (const auto& token : arguments.tokens.value_or(std::vector<std::string>{})) {
    velmaro::QVKUploadResponse response;
    response.uploadToken = token;
    result.uploads->push_back(std::move(response));
  }
  return result;
}

}  // namespace qvk
