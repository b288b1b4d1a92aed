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

/// An immutable, cheaply copied tree that tells what is to be seen and what is to happen, and nothing about
/// how. The default one is empty: it draws nothing and takes no room. Views.h has the views to start from;
/// the operations here wrap one into another.
class AnyView {
 public:
  AnyView();
  explicit AnyView(ViewNode node);

  const ViewNode& node() const noexcept { return *node_; }

  /// Whether it is the empty view itself.
  bool isEmpty() const noexcept;

  AnyView padding(const Insets& insets) const;
  AnyView frame(const node::Frame& frame) const;
  AnyView background(const node::Background& background) const;

  /// With `content` drawn over it.
  AnyView overlay(const AnyView& content, Alignment alignment) const;

  AnyView opacity(double opacity) const;

  /// With its controls out of use.
  AnyView disabled(bool isDisabled = true) const;

  AnyView ignoresSafeArea() const;
  AnyView accessibility(const node::Accessibility& accessibility) const;

  /// With an identity among its siblings other than its position, so that its state follows it when they
  /// move.
  AnyView key(std::string identity) const;

  /// Whether both show the same; handlers are not compared.
  friend bool operator==(const AnyView& a, const AnyView& b);

 private:
  std::shared_ptr<const ViewNode> node_;
};

}  // namespace view
}  // namespace TalvoConsentSDK
