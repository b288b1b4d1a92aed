#include "TalvoConsentSDK/base/Error.h"

namespace TalvoConsentSDK {

namespace {

// The `what` of a host's exception may return null.
const char* textOf(const std::exception& error) noexcept {
  const char* const text = error.what();
  return text ? text : "Unknown error";
}

}  // namespace

std::string withVisibleNULs(std::string text) {
  constexpr std::string_view visible = "\\u0000";
  for (auto at = text.find('\0'); at != text.npos; at = text.find('\0', at + visible.size()))
    text.replace(at, 1, visible);
  return text;
}

PlatformError::PlatformError(std::string domain, int code, std::string localizedDescription)
    : domain_(std::move(domain)), code_(code) {
  userInfo_.emplace(localizedDescriptionKey, withVisibleNULs(std::move(localizedDescription)));
}

const std::string& PlatformError::localizedDescription() const noexcept {
  return userInfo_.begin()->second;
}

const char* PlatformError::what() const noexcept {
  return localizedDescription().c_str();
}

const char* Error::what() const noexcept {
  return textOf(*cause_);
}

void Error::raise() const {
  throw *this;
}

Error Error::current() {
  try {
    throw;
  } catch (const Error& error) {
    return error;
  } catch (const PlatformError& error) {
    return error;
  } catch (const std::exception& error) {
    return PlatformError("TalvoConsentSDK", -1, textOf(error));
  } catch (...) {
    return PlatformError("TalvoConsentSDK", -1, "Unknown error");
  }
}

}  // namespace TalvoConsentSDK
