#include "apps/lint/Lines.h"

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"

#include "apps/lint/Site.h"

namespace TalvoConsentSDK::linting {

// Walks through a text that is JSON, as deep as it is nested.
class LineScanner {
 public:
  LineScanner(std::string_view text, Lines& lines) : text_(text), lines_(lines) {}

  void scan() {
    skipSpace();
    lines_.lines_.emplace("", line_);
    value("");
  }

 private:
  char current() const { return at_ < text_.size() ? text_[at_] : '\0'; }

  void skipSpace() {
    for (; at_ < text_.size() && std::string_view(" \t\r\n,:").find(text_[at_]) != std::string_view::npos;
         ++at_) {
      if (text_[at_] == '\n') ++line_;
    }
  }

  std::string_view string() {
    const std::size_t start = at_++;
    while (at_ < text_.size() && text_[at_] != '"') at_ += text_[at_] == '\\' ? 2 : 1;
    ++at_;
    return text_.substr(start, at_ - start);
  }

  std::string key() {
    const std::string_view literal = string();
    if (literal.find('\\') == std::string_view::npos) {
      return std::string(literal.substr(1, literal.size() - 2));
    }
    const auto text = JSONDecoder().decode<JSONValue>(literal);
    return text && text->string() ? *text->string() : std::string(literal);
  }

  void value(const std::string& path) {
    if (current() == '{') return object(path);
    if (current() == '[') return list(path);
    if (current() == '"') {
      string();
      return;
    }
    at_ = std::min(text_.find_first_of(",]} \t\r\n", at_), text_.size());
  }

  void object(const std::string& path) {
    ++at_;
    std::map<std::string, std::size_t> own;
    for (skipSpace(); current() == '"'; skipSpace()) {
      const std::size_t line = line_;
      const std::string name = key();
      const std::string member = path.empty() ? name : path + "." + name;
      const auto [first, isNew] = own.emplace(name, line);
      if (!isNew) lines_.repeatedKeys_.push_back({member, first->second});
      lines_.lines_.insert_or_assign(member, line);
      skipSpace();
      value(member);
    }
    ++at_;
  }

  void list(const std::string& path) {
    ++at_;
    std::size_t index = 0;
    for (skipSpace(); at_ < text_.size() && current() != ']'; skipSpace()) {
      const std::string entry = at(path, index++);
      lines_.lines_.insert_or_assign(entry, line_);
      value(entry);
    }
    ++at_;
  }

  const std::string_view text_;
  Lines& lines_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
};

Lines::Lines(std::string_view text) {
  LineScanner(text, *this).scan();
}

std::size_t Lines::of(std::string path) const {
  for (auto name = names_.rbegin(); name != names_.rend(); ++name) {
    const auto& [misspelt, corrected] = *name;
    const bool begins =
        path.starts_with(corrected) &&
        (path.size() == corrected.size() || path[corrected.size()] == '.' || path[corrected.size()] == '[');
    if (begins) path.replace(0, corrected.size(), misspelt);
  }
  for (;;) {
    if (const auto found = lines_.find(path); found != lines_.end()) return found->second;
    if (path.empty()) return 0;
    const std::size_t end = path.find_last_of(".[");
    path.resize(end == std::string::npos ? 0 : end);
  }
}

void Lines::rename(std::string misspelt, std::string corrected) {
  names_.emplace_back(std::move(misspelt), std::move(corrected));
}

}  // namespace TalvoConsentSDK::linting
