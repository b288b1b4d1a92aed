#include "apps/host/HostScreen.h"

#include <utility>

#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/Views.h"

namespace TalvoConsentHost {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

namespace {

constexpr Color page{0.955, 0.96, 0.965, 1};
constexpr Color card{1, 1, 1, 1};
constexpr Color ink{0.10, 0.12, 0.15, 1};
constexpr Color faint{0.38, 0.41, 0.46, 1};
constexpr Color accent{0.06, 0.36, 0.33, 1};
constexpr Color tint{0.86, 0.94, 0.92, 1};
constexpr Alignment leading{HorizontalAlignment::leading};

AnyView header() {
  const AnyView name =
      text("Aurora Daily", {.font = {TextStyle::headline, FontWeight::bold}, .color = accent});
  const AnyView line = text("A sample app with a consent banner",
                            {.font = {TextStyle::footnote, FontWeight::regular}, .color = faint});
  return verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 2}, {name, line})
      .frame({.maxWidth = infinity, .alignment = leading})
      .padding({.top = 16, .leading = 20, .bottom = 8, .trailing = 20});
}

AnyView section(const std::string& title, const AnyView& content) {
  const AnyView heading = text(title, {.font = {TextStyle::footnote, FontWeight::semibold}, .color = faint})
                              .accessibility({.role = Role::heading})
                              .padding({.leading = 4});
  const AnyView box = content.frame({.maxWidth = infinity, .alignment = leading})
                          .padding(Insets::all(14))
                          .background({.color = card, .cornerRadius = 12});
  return verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 6}, {heading, box});
}

// Three dots, one of which is dark.
AnyView busyIndicator(unsigned step) {
  constexpr double size = 5;
  std::vector<AnyView> dots;
  for (unsigned i = 0; i < 3; ++i) {
    dots.push_back(AnyView()
                       .frame({.minWidth = size, .maxWidth = size, .minHeight = size, .maxHeight = size})
                       .background({accent.withAlpha(step % 3 == i ? 1 : 0.3), size / 2}));
  }
  return horizontalStack({.spacing = 3}, dots);
}

AnyView operationButton(const HostOperation& operation, const std::optional<unsigned>& busyStep) {
  const AnyView label = text(operation.title, {.font = {TextStyle::subheadline, FontWeight::semibold},
                                               .color = accent,
                                               .alignment = HorizontalAlignment::center});
  const bool isBusy = operation.showsBanner && busyStep;
  const AnyView content = isBusy ? horizontalStack({.spacing = 6, .overflow = Overflow::stackAtBrokenWord},
                                                   {label, busyIndicator(*busyStep)})
                                 : label;
  return button(content.frame({.maxWidth = infinity})
                    .padding(Insets::vertical(12))
                    .background({.color = tint, .cornerRadius = 10}),
                operation.start)
      .accessibility({.description = isBusy ? busyDescription : ""});
}

AnyView operationList(const std::vector<HostOperation>& operations, const std::optional<unsigned>& busyStep) {
  std::vector<AnyView> rows;
  for (std::size_t i = 0; i < operations.size(); i += 2) {
    std::vector<AnyView> row{operationButton(operations[i], busyStep)};
    if (i + 1 < operations.size()) row.push_back(operationButton(operations[i + 1], busyStep));
    rows.push_back(horizontalStack({.spacing = 8, .overflow = Overflow::stackAtBrokenWord}, row));
  }
  return verticalStack({.spacing = 8}, rows);
}

AnyView log(const std::vector<std::string>& lines) {
  std::vector<AnyView> views;
  for (const std::string& line : lines) {
    views.push_back(text(line, {.font = {TextStyle::footnote, FontWeight::regular}, .color = faint}));
  }
  if (views.empty()) {
    views.push_back(
        text("No events so far", {.font = {TextStyle::footnote, FontWeight::regular}, .color = faint}));
  }
  return verticalStack({.alignment = HorizontalAlignment::leading, .spacing = 6}, views);
}

}  // namespace

AnyView hostScreen(const State<HostContent>& content, std::vector<HostOperation> operations) {
  return component("host screen", [content, operations = std::move(operations)](RenderContext& context) {
    context.observe(content);
    const AnyView stored =
        text(content.get().stored, {.font = {TextStyle::subheadline, FontWeight::regular}, .color = ink});
    const AnyView sections =
        verticalStack({.spacing = 18},
                      {
                          section("STORED CONSENT", stored),
                          section("OPERATIONS", operationList(operations, content.get().busyStep)),
                          section("EVENTS", log(content.get().log)),
                      })
            .padding(Insets::all(16));
    const Alignment top{HorizontalAlignment::center, VerticalAlignment::top};
    return depthStack(top, {shape(page).ignoresSafeArea(),
                            verticalStack({}, {header(), scrollView(sections)}).background({.color = page})});
  });
}

}  // namespace TalvoConsentHost
