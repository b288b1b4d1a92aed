#include "TalvoConsentSDK/view/Views.h"

#include <utility>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

AnyView make(node::Content content, std::vector<AnyView> children = {}) {
  return AnyView(ViewNode{std::move(content), std::move(children), {}});
}

}  // namespace

AnyView::AnyView() {
  static const auto& empty = neverDestroyed(std::make_shared<const ViewNode>());
  node_ = empty;
}

AnyView::AnyView(ViewNode node) : node_(std::make_shared<const ViewNode>(std::move(node))) {}

bool AnyView::isEmpty() const noexcept {
  return std::holds_alternative<node::Empty>(node_->content);
}

AnyView AnyView::padding(const Insets& insets) const {
  return make(node::Padding{insets}, {*this});
}

AnyView AnyView::frame(const node::Frame& frame) const {
  return make(frame, {*this});
}

AnyView AnyView::background(const node::Background& background) const {
  return make(background, {*this});
}

AnyView AnyView::overlay(const AnyView& content, Alignment alignment) const {
  return make(node::Overlay{alignment}, {*this, content});
}

AnyView AnyView::disabled(bool isDisabled) const {
  return make(node::Disabled{isDisabled}, {*this});
}

AnyView AnyView::ignoresSafeArea() const {
  return make(node::IgnoresSafeArea{}, {*this});
}

AnyView AnyView::accessibility(const node::Accessibility& accessibility) const {
  return make(accessibility, {*this});
}

AnyView AnyView::key(std::string identity) const {
  ViewNode node = *node_;
  node.key = std::move(identity);
  return AnyView(std::move(node));
}

bool operator==(const AnyView& a, const AnyView& b) {
  return a.node_ == b.node_ || (a.node_->key == b.node_->key && a.node_->content == b.node_->content &&
                                a.node_->children == b.node_->children);
}

AnyView text(std::string content, const TextOptions& options) {
  return make(
      node::Text{std::move(content), options.font, options.color, options.isUnderlined, options.alignment});
}

AnyView symbol(const node::Symbol& symbol) {
  return make(symbol);
}

AnyView asyncImage(URL url, double height) {
  return make(node::AsyncImage{std::move(url), height});
}

AnyView shape(Color color) {
  return make(node::Shape{color});
}

AnyView button(const AnyView& label, std::function<void()> action) {
  return make(node::Button{{std::move(action)}}, {label});
}

AnyView toggle(const Binding<bool>& isOn, const ToggleColors& colors) {
  return make(node::Toggle{
      .isOn = isOn.get(),
      .set = {[isOn](bool value) { isOn.set(value); }},
      .onColor = colors.on,
      .offColor = colors.off,
      .knobColor = colors.knob,
  });
}

AnyView horizontalStack(const HorizontalOptions& options, std::vector<AnyView> children) {
  return make(node::Stack{.axis = node::Axis::horizontal,
                          .alignment = {options.stacked, options.alignment},
                          .spacing = options.spacing,
                          .overflow = options.overflow},
              std::move(children));
}

AnyView verticalStack(const VerticalOptions& options, std::vector<AnyView> children) {
  return make(node::Stack{.axis = node::Axis::vertical,
                          .alignment = {options.alignment, VerticalAlignment::center},
                          .spacing = options.spacing},
              std::move(children));
}

AnyView depthStack(Alignment alignment, std::vector<AnyView> children) {
  return make(node::Stack{.axis = node::Axis::depth, .alignment = alignment}, std::move(children));
}

AnyView divider(Color color) {
  return make(node::Divider{color});
}

AnyView scrollView(const AnyView& content) {
  return make(node::Scroll{}, {content});
}

AnyView pinnedEnds(const node::PinnedEnds& options, std::vector<AnyView> children) {
  return make(options, std::move(children));
}

AnyView disclosure(bool isOpen, const AnyView& content) {
  return make(node::Disclosure{isOpen}, isOpen ? std::vector{content} : std::vector<AnyView>());
}

AnyView lazyRows(std::size_t count, std::function<AnyView(std::size_t)> row) {
  return make(node::LazyRows{count, {std::move(row)}});
}

AnyView component(std::string name, std::function<AnyView(RenderContext&)> body) {
  return make(node::Component{std::move(name), {std::move(body)}});
}

}  // namespace view
}  // namespace TalvoConsentSDK
