#include "TalvoConsentSDK/view/Accessible.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/view/ViewNode.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

std::string texts(const Element& element) {
  if (const auto* text = std::get_if<node::Text>(&element.view.node().content)) return text->text;
  std::string all;
  forEachChild(element, [&](const Element& child) {
    const std::string own = texts(child);
    if (!all.empty() && !own.empty()) all += ' ';
    all += own;
  });
  return all;
}

class Collector {
 public:
  explicit Collector(double controlScale) : target_(minTarget * controlScale) {}

  void add(const Element& element, bool isEnabled) {
    std::visit([&](const auto& content) { collect(element, content, isEnabled); },
               element.view.node().content);
  }

  std::vector<AccessibleElement> take() && { return std::move(elements_); }

 private:
  void addChildren(const Element& element, bool isEnabled) {
    forEachChild(element, [&](const Element& child) { add(child, isEnabled); });
  }

  AccessibleElement& append(const Element& element, Role role, std::string name, bool isEnabled) {
    AccessibleElement& added = elements_.emplace_back();
    added.id = element.id;
    added.role = role;
    added.name = std::move(name);
    added.language = language_;
    added.isEnabled = isEnabled;
    added.frame = element.frame;
    added.clip = element.clip;
    return added;
  }

  AccessibleElement& appendControl(const Element& element, Role role, std::string name, bool isEnabled) {
    AccessibleElement& added = append(element, role, std::move(name), isEnabled);
    added.frame = element.frame.grownTo({target_, target_});
    added.control = AccessibleControl{element.view, element.frame};
    return added;
  }

  void collect(const Element& element, const node::Text& text, bool) {
    append(element, Role::text, text.text, true);
  }

  void collect(const Element& element, const node::Button&, bool isEnabled) {
    appendControl(element, Role::button, texts(element), isEnabled);
  }

  void collect(const Element& element, const node::Toggle& toggle, bool isEnabled) {
    appendControl(element, Role::toggle, "", isEnabled).value = toggle.isOn ? "on" : "off";
  }

  void collect(const Element& element, const node::Disabled& disabled, bool isEnabled) {
    addChildren(element, isEnabled && !disabled.isDisabled);
  }

  void collect(const Element& element, const node::Disclosure& disclosure, bool isEnabled) {
    if (disclosure.isOpen) addChildren(element, isEnabled);
  }

  // A dialog becomes an element, followed by its content. For any other role, the properties in `own` apply
  // to the first element inside the view; if there is none, a view with a label becomes an element itself.
  void collect(const Element& element, const node::Accessibility& own, bool isEnabled) {
    const std::string_view surroundings = language_;
    if (!own.language.empty()) language_ = own.language;
    collectInLanguage(element, own, isEnabled);
    language_ = surroundings;
  }

  void collectInLanguage(const Element& element, const node::Accessibility& own, bool isEnabled) {
    if (own.role == Role::dialog) {
      append(element, own.role, own.label, true).isModal = own.isModal;
      addChildren(element, isEnabled);
      return;
    }
    const std::size_t first = elements_.size();
    addChildren(element, isEnabled);
    if (elements_.size() == first) {
      if (own.label.empty()) return;
      append(element, own.role == Role::none ? Role::image : own.role, own.label, true);
    }
    AccessibleElement& subject = elements_[first];
    if (own.role != Role::none) subject.role = own.role;
    if (!own.label.empty()) subject.name = own.label;
    if (!own.value.empty()) subject.value = own.value;
    if (!own.description.empty()) subject.description = own.description;
    if (own.isDismissal) subject.isDismissal = true;
    if (own.focusRequests > 0) elements_.back().focusRequests = own.focusRequests;
  }

  template <class Other>
  void collect(const Element& element, const Other&, bool isEnabled) {
    addChildren(element, isEnabled);
  }

  const double target_;
  std::string_view language_;
  std::vector<AccessibleElement> elements_;
};

Rect visiblePart(const Rect& frame, const std::optional<Rect>& clip) {
  return clip ? frame.intersection(*clip) : frame;
}

double distance(const Rect& frame, Point p) {
  const double dx = std::max({frame.x - p.x, 0.0, p.x - frame.right()});
  const double dy = std::max({frame.y - p.y, 0.0, p.y - frame.bottom()});
  return std::hypot(dx, dy);
}

}  // namespace

std::vector<AccessibleElement> collectAccessibleElements(const ElementTree& tree, double controlScale) {
  Collector collector(controlScale);
  collector.add(tree.root(), true);
  return std::move(collector).take();
}

const AccessibleElement* controlAt(const std::vector<AccessibleElement>& elements, Point point) {
  const AccessibleElement* nearest = nullptr;
  double shortest = infinity;
  for (const AccessibleElement& each : elements) {
    if (!each.isControl() || (each.clip && !each.clip->contains(point))) continue;
    if (!each.frame.contains(point)) continue;
    const double own = distance(visiblePart(each.control->frame, each.clip), point);
    if (own <= shortest) {  // at the same distance, the later element lies on top
      nearest = &each;
      shortest = own;
    }
  }
  return nearest;
}

bool isCovered(const ElementTree& tree, Point point) {
  const auto covers = [&](const auto& self, const Element& element) -> bool {
    const auto& content = element.view.node().content;
    const bool isFilled =
        std::holds_alternative<node::Shape>(content) || std::holds_alternative<node::Background>(content);
    if (isFilled && visiblePart(element.frame, element.clip).contains(point)) return true;
    bool covered = false;
    forEachChild(element, [&](const Element& child) { covered = covered || self(self, child); });
    return covered;
  };
  return covers(covers, tree.root());
}

void performAction(const AccessibleControl& control) {
  const auto& content = control.view.node().content;
  if (const auto* button = std::get_if<node::Button>(&content)) {
    const auto action = button->action.run;  // a copy: the handler may replace the view that owns it
    action();
  } else if (const auto* toggle = std::get_if<node::Toggle>(&content)) {
    const auto set = toggle->set.run;
    set(!toggle->isOn);
  }
}

}  // namespace view
}  // namespace TalvoConsentSDK
