#include "TalvoConsentSDK/view/Views.h"

#include <utility>

namespace TalvoConsentSDK {

namespace {

AnyView make(view::Content content, std::vector<AnyView> children = {}) {
  return AnyView(ViewNode{std::move(content), std::move(children), {}});
}

}  // namespace

AnyView::AnyView() {
  static const auto& empty = *new std::shared_ptr<const ViewNode>(std::make_shared<ViewNode>());
  node_ = empty;
}

AnyView::AnyView(ViewNode node) : node_(std::make_shared<const ViewNode>(std::move(node))) {}

bool AnyView::isEmpty() const noexcept {
  return std::holds_alternative<view::Empty>(node_->content);
}

AnyView AnyView::padding(const Insets& insets) const {
  return make(view::Padding{insets}, {*this});
}

AnyView AnyView::frame(const view::Frame& frame) const {
  return make(frame, {*this});
}

AnyView AnyView::background(const view::Background& background) const {
  return make(background, {*this});
}

AnyView AnyView::overlay(const AnyView& content, Alignment alignment) const {
  return make(view::Overlay{alignment}, {*this, content});
}

AnyView AnyView::opacity(double opacity) const {
  return make(view::Opacity{opacity}, {*this});
}

AnyView AnyView::disabled(bool isDisabled) const {
  return make(view::Disabled{isDisabled}, {*this});
}

AnyView AnyView::ignoresSafeArea() const {
  return make(view::IgnoresSafeArea{}, {*this});
}

AnyView AnyView::accessibility(const view::Accessibility& accessibility) const {
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
      view::Text{std::move(content), options.font, options.color, options.isUnderlined, options.alignment});
}

AnyView symbol(const view::Symbol& symbol) {
  return make(symbol);
}

AnyView asyncImage(URL url, double height) {
  return make(view::AsyncImage{std::move(url), height});
}

AnyView shape(Color color) {
  return make(view::Shape{color});
}

AnyView button(const AnyView& label, std::function<void()> action) {
  return make(view::Button{{std::move(action)}}, {label});
}

AnyView toggle(const Binding<bool>& isOn, const ToggleColors& colors) {
  return make(view::Toggle{
      .isOn = isOn.get(),
      .set = {[isOn](bool value) { isOn.set(value); }},
      .onColor = colors.on,
      .offColor = colors.off,
      .knobColor = colors.knob,
  });
}

AnyView horizontalStack(const HorizontalOptions& options, std::vector<AnyView> children) {
  return make(view::Stack{.axis = view::Axis::horizontal,
                          .alignment = {options.stacked, options.alignment},
                          .spacing = options.spacing,
                          .overflow = options.overflow},
              std::move(children));
}

AnyView verticalStack(const VerticalOptions& options, std::vector<AnyView> children) {
  return make(view::Stack{.axis = view::Axis::vertical,
                          .alignment = {options.alignment, VerticalAlignment::center},
                          .spacing = options.spacing},
              std::move(children));
}

AnyView depthStack(Alignment alignment, std::vector<AnyView> children) {
  return make(view::Stack{.axis = view::Axis::depth, .alignment = alignment}, std::move(children));
}

AnyView spacer() {
  return make(view::Spacer{});
}

AnyView divider(Color color) {
  return make(view::Divider{color});
}

AnyView scrollView(const AnyView& content) {
  return make(view::Scroll{}, {content});
}

AnyView pinnedFooter(const AnyView& content, const AnyView& footer, double inset) {
  return make(view::PinnedFooter{.inset = inset}, {content, footer});
}

AnyView lazyRows(std::size_t count, std::function<AnyView(std::size_t)> row) {
  return make(view::LazyRows{count, {std::move(row)}});
}

AnyView component(std::string name, std::function<AnyView(RenderContext&)> body) {
  return make(view::Component{std::move(name), {std::move(body)}});
}

}  // namespace TalvoConsentSDK
