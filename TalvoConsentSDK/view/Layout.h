#pragma once

// Decides the rectangle of every element. A parent proposes a size, a child answers with its own, and the
// parent places it.

#include <optional>
#include <vector>

#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/ViewEnvironment.h"
#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

/// A part of the window whose content scrolls.
struct ScrollRegion {
  ElementId id = 0;
  Rect frame;
  double contentHeight = 0;

  double maxOffset() const { return std::max(0.0, contentHeight - frame.height); }
};

/// How far a region has been scrolled, in points from the top; remembered by the region's identity. A layout
/// reduces what is beyond the end to the end.
struct ScrollOffset {
  double y = 0;
};

/// A picture that has arrived; remembered by the identity of its view.
struct LoadedImage {
  std::optional<URL> url;
  std::shared_ptr<const Image> image;  // null: still loading, or not to be had
};

/// One layout of a tree. Sizes already measured are taken from the elements. Shared libraries do not show it.
class Layout {
 public:
  Layout(ElementTree& tree, const ViewEnvironment& environment);

  enum class Rows { near, all };

  /// Lays the tree out in the window: the root in what the safe area leaves. Of lazy rows, those near the
  /// visible part are made, or all; others are dropped, except for those that hold one of `kept`.
  void run(std::vector<ElementId> kept, Rows rows = Rows::near);

  /// The parts that scroll, outermost first.
  const std::vector<ScrollRegion>& scrollRegions() const { return scrollRegions_; }

 private:
  Size size(Element& element, Proposal proposal);
  Size measure(Element& element, const Proposal& proposal);
  void place(Element& element, const Rect& frame, const Proposal& proposal);

  /// Places an element of its own size within a frame.
  void placeAligned(Element& element, const Rect& frame, Alignment alignment, const Proposal& proposal);

  /// The width below which a word in the element would be broken.
  double minContentWidth(Element& element) const;
  double measureMinContentWidth(const Element& element) const;

  struct StackItem {
    Element* element;
    Proposal proposal;
    Size size;
  };
  struct FlowLine {
    std::vector<StackItem> items;
    Size size;
  };

  Size measureStack(Element& element, const node::Stack& stack, const Proposal& proposal);
  void placeStack(Element& element, const node::Stack& stack, const Rect& frame, const Proposal& proposal);
  std::vector<StackItem> distribute(Element& element, const node::Stack& stack, node::Axis axis,
                                    const Proposal& proposal);
  std::vector<FlowLine> flow(Element& element, double spacing, const Proposal& proposal);
  double flexibility(Element& child, node::Axis axis, const Proposal& proposal);
  bool breaksAWord(Element& element, const node::Stack& stack, const Proposal& proposal);

  Size measureImage(const Element& element, const node::AsyncImage& image, const Proposal& proposal);

  struct PinnedHeights {
    double content;
    double footer;
    double inset;
    double middle;  // what is left for the content; equals `content` when all fits
    bool scrollsAll;
  };
  PinnedHeights pinnedHeights(Element& element, const node::PinnedFooter& pinned, const Proposal& proposal);
  void placePinned(Element& element, const node::PinnedFooter& pinned, const Rect& frame,
                   const Proposal& proposal);
  ScrollOffset& scrollOffset(ElementId region);
  double placeScroller(const Element& element, const Rect& region, double contentHeight);

  Size measureRows(Element& element, const Proposal& proposal);
  void placeRows(Element& element, const Rect& frame);
  bool holdsKept(const Element& element) const;

  void mirror(Rect& rect) const;
  void mirror(Element& element) const;

  ElementTree& tree_;
  const ViewEnvironment& environment_;
  /// What the element that is being placed is seen through.
  struct Viewport {
    Rect visible;
    std::optional<Rect> clip;
    ScrollOffset* offset = nullptr;  // null: it does not scroll
  };

  std::vector<ScrollRegion> scrollRegions_;
  Viewport viewport_;
  std::vector<ElementId> kept_;
  Rows rows_ = Rows::near;
  bool rowsChanged_ = false;
};

}  // namespace view
}  // namespace TalvoConsentSDK
