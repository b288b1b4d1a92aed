#pragma once

// A view of any kind, as a value.

#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

namespace TalvoConsentSDK {
namespace view TALVO_EXPORT {

struct ViewNode;

namespace node {
struct Accessibility;
struct Background;
struct Frame;
}  // namespace node

/// An immutable tree that describes what to show and how to react, but not how to draw it. Cheap to copy. A
/// default-constructed view is empty: it draws nothing and takes no room. Views.h has the basic views; the
/// operations here return a view that wraps this one.
class AnyView {
 public:
  AnyView();
  explicit AnyView(ViewNode node);

  const ViewNode& node() const noexcept { return *node_; }

  /// Whether this is the empty view. Returns false for a view that wraps the empty view.
  bool isEmpty() const noexcept;

  AnyView padding(const Insets& insets) const;
  AnyView frame(const node::Frame& frame) const;
  AnyView background(const node::Background& background) const;

  /// Draws `content` over this view.
  AnyView overlay(const AnyView& content, Alignment alignment) const;

  AnyView disabled(bool isDisabled = true) const;

  AnyView ignoresSafeArea() const;
  AnyView accessibility(const node::Accessibility& accessibility) const;

  /// Identifies the view among its siblings by a key instead of its position, so that it keeps its state when
  /// its position changes.
  AnyView key(std::string identity) const;

  /// Whether both views are equal apart from their handlers.
  friend bool operator==(const AnyView& a, const AnyView& b);

 private:
  std::shared_ptr<const ViewNode> node_;
};

}  // namespace view
}  // namespace TalvoConsentSDK
