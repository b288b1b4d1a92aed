#pragma once

// The basic views. A screen combines them with each other and with AnyView's operations.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Font.h"
#include "TalvoConsentSDK/base/URL.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/State.h"
#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

struct TextOptions {
  Font font = {};
  Color color = {};
  bool isUnderlined = false;
  HorizontalAlignment alignment = HorizontalAlignment::leading;
};

struct ToggleColors {
  Color on = {};
  Color off = {};
  Color knob = {};
};

/// Options of `horizontalStack`, whose children run from leading to trailing.
struct HorizontalOptions {
  VerticalAlignment alignment = VerticalAlignment::center;
  double spacing = 0;
  Overflow overflow = Overflow::compress;
  HorizontalAlignment stacked = HorizontalAlignment::center;  // used when overflow stacks the children
};

struct VerticalOptions {
  HorizontalAlignment alignment = HorizontalAlignment::center;
  double spacing = 0;
};

TALVO_EXPORT AnyView text(std::string content, const TextOptions& options);
TALVO_EXPORT AnyView symbol(const node::Symbol& symbol);
TALVO_EXPORT AnyView asyncImage(URL url, double height);
TALVO_EXPORT AnyView shape(Color color);
TALVO_EXPORT AnyView button(const AnyView& label, std::function<void()> action);
TALVO_EXPORT AnyView toggle(const Binding<bool>& isOn, const ToggleColors& colors);
TALVO_EXPORT AnyView horizontalStack(const HorizontalOptions& options, std::vector<AnyView> children);
TALVO_EXPORT AnyView verticalStack(const VerticalOptions& options, std::vector<AnyView> children);

/// Draws the children on top of each other, the last one topmost.
TALVO_EXPORT AnyView depthStack(Alignment alignment, std::vector<AnyView> children);

TALVO_EXPORT AnyView divider(Color color);
TALVO_EXPORT AnyView scrollView(const AnyView& content);

/// See `node::PinnedEnds`. The children are the bar, the title, the content, the links and the footer.
TALVO_EXPORT AnyView pinnedEnds(const node::PinnedEnds& options, std::vector<AnyView> children);

/// See `node::Disclosure`. `content` is not used unless it is open.
TALVO_EXPORT AnyView disclosure(bool isOpen, const AnyView& content);

/// See `node::LazyRows`. `row` returns the row at an index.
TALVO_EXPORT AnyView lazyRows(std::size_t count, std::function<AnyView(std::size_t)> row);

/// See `node::Component`. `body` runs for every rendering.
TALVO_EXPORT AnyView component(std::string name, std::function<AnyView(RenderContext&)> body);

}  // namespace view
}  // namespace TalvoConsentSDK
