#include "tools/qvk/forms_group.h"

#include <CLI/CLI.hpp>
#include <boost/json/value_from.hpp>

#include "tools/qvk/int64_argument.h"
#include "tools/qvk/library_call.h"
#include "tools/qvk/requests_tables.h"
#include "velmaro/requests/qvk_request_provider.h"

namespace qvk {

namespace {

using Forms = velmaro::QVKRequestProvider::TicketForms;

void print(Output& output, const Forms& forms) {
  auto& out = output.text();
  for (const auto& form : forms) {
    out << "Form " << RequestsTables::rawText(form->formId) << "  "
        << RequestsTables::rawText(form->displayName) << "\n";
    RequestsTables::fields(*form).print(out);
    out << "\n";
  }
  out << forms.size() << (forms.size() == 1 ? " form\n" : " forms\n");
  out.flush();
}

}  // namespace

void FormsGroup::declare(CLI::App& root) {
  command(&root, "forms", "Show ticket forms with their fields", &FormsGroup::show)
      ->add_option("ID", formIds_, "Ticket form ids (the first five are asked for)")
      ->required()
      ->check(Int64Argument::inRange());
}

int FormsGroup::show(CommandContext& context) const {
  velmaro::QVKRequestProvider provider(context.session.core());
  auto forms = LibraryCall::await<Forms>(
      context.session, [&](auto cb) { provider.getTicketFormWithIds(formIds_, std::move(cb)); });
  if (!forms) return context.output.error(forms.error());
  if (!context.output.json()) {
    print(context.output, *forms);
    return 0;
  }
  boost::json::array list;
  for (const auto& form : *forms) list.push_back(boost::json::value_from(*form));
  context.output.document(boost::json::object{{"ticketForms", std::move(list)}});
  return 0;
}

}  // namespace qvk
