#pragma once

// Computes the frame of every element. A parent proposes a size, the child returns its own size, and the
// parent places the child.

#include <optional>
#include <vector>

#include "TalvoConsentSDK/view/Animations.h"
#include "TalvoConsentSDK/view/Element.h"
#include "TalvoConsentSDK/view/ScrollRegion.h"
#include "TalvoConsentSDK/view/ViewEnvironment.h"
#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

/// A picture that was requested. Stored under the identity of its view.
struct LoadedImage {
  std::optional<URL> url;
  std::shared_ptr<const Image> image;  // null while it is loading, and if loading failed
};

/// The share of the free room that goes before an aligned child: 0, a half, or 1.
double shareBefore(HorizontalAlignment alignment);
double shareBefore(VerticalAlignment alignment);

/// Lays out a tree. Reuses the sizes that are stored in the elements. Shared libraries do not export this
/// class.
class Layout {
 public:
  Layout(ElementTree& tree, const ViewEnvironment& environment, Animations& animations);

  /// Which lazy rows to create: those near the visible part, or all.
  enum class Rows { nearby, all };

  /// Lays out the tree in the window, with the root inside the safe area. Creates the lazy rows that `rows`
  /// asks for and removes the others, except those that contain one of the `kept` elements.
  void run(std::vector<ElementId> kept, Rows rows = Rows::nearby);

  /// In the next run, the lower edge of a scrolling part moves if it would lie between two lines.
  void settle() { settles_ = true; }

  /// The regions that scroll, outermost first.
  const std::vector<ScrollRegion>& scrollRegions() const { return scrollRegions_; }

  /// Forgets the regions, because their elements may be destroyed before the next layout.
  void forgetRegions() { scrollRegions_.clear(); }

  /// Whether something was moving, so that the next frame has to be laid out again.
  bool isMoving() const { return isMoving_; }

  /// Whether a list was opening or closing.
  bool movesRows() const { return movesRows_; }

 private:
  Size size(Element& element, Proposal proposal);
  Size measure(Element& element, const Proposal& proposal);
  void place(Element& element, const Rect& frame, const Proposal& proposal);

  /// Places an element at its own size, aligned within a frame.
  void placeAligned(Element& element, const Rect& frame, Alignment alignment, const Proposal& proposal);

  /// The minimum width at which no word in the element is split.
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

  /// How a PinnedEnds view is divided.
  struct PinnedParts {
    Size size;
    Proposal title;
    double barY = 0;
    double titleX = 0;
    double titleY = 0;
    double top = 0;         // of the part that scrolls
    double contentTop = 0;  // where its content begins if it is not scrolled
    double scrolled = 0;    // the height of what scrolls; 0 if everything fits
    double growth = 0;      // see ScrollOffset
    double footer = 0;      // the height of what stays below
    bool scrollsTitle = false;
    bool scrollsLinks = false;
    bool scrollsFooter = false;
  };
  PinnedParts pinnedParts(Element& element, const node::PinnedEnds& pinned, const Proposal& proposal);
  void placePinned(Element& element, const node::PinnedEnds& pinned, const Rect& frame,
                   const Proposal& proposal);
  double endOfLine(Element& element, double limit);
  double endOf(ElementId id, const Element& element) const;
  ScrollOffset& scrollOffset(const Element& region);
  double placeScroller(Element& element, const Rect& region, double contentHeight);

  double firstHeight() const;
  Size measureDisclosure(Element& element, const node::Disclosure& disclosure, const Proposal& proposal);
  void placeDisclosure(Element& element, const node::Disclosure& disclosure, const Rect& frame,
                       const Proposal& proposal);

  Size measureRows(Element& element, const Proposal& proposal);
  void placeRows(Element& element, const Rect& frame);
  bool holdsKept(const Element& element) const;

  void mirror(Rect& rect) const;
  void mirror(Element& element) const;

  ElementTree& tree_;
  const ViewEnvironment& environment_;
  Animations& animations_;
  /// The part of the window in which the element being placed is visible, and what clips and scrolls it.
  struct Viewport {
    Rect visible;
    std::optional<Rect> clip;
    ScrollOffset* offset = nullptr;  // null if the element is in no scroll region
    double end = 0;                  // of the region's content
  };

  std::vector<ScrollRegion> scrollRegions_;
  Viewport viewport_;
  std::vector<ElementId> kept_;
  Rows rows_ = Rows::nearby;
  bool needsAnotherPass_ = false;
  bool isOpening_ = false;   // whether a disclosure was found that has begun to open
  bool isSettling_ = false;  // whether it has, or has just closed, or scrolling has ended
  bool settles_ = false;     // in the next run
  bool isMoving_ = false;
  bool movesRows_ = false;
  std::vector<Element*> moving_;
};

}  // namespace view
}  // namespace TalvoConsentSDK
