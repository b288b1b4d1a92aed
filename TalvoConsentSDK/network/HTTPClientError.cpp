#include "TalvoConsentSDK/network/HTTPClientError.h"

#include <utility>

namespace TalvoConsentSDK {

HTTPClientError HTTPClientError::httpError(int statusCode, std::string message) {
  HTTPClientError error(Case::httpError, "HTTP error " + std::to_string(statusCode) + ": " + message);
  error.statusCode_ = statusCode;
  error.message_ = std::move(message);
  return error;
}

HTTPClientError HTTPClientError::decodingError(Error underlying) {
  HTTPClientError error(Case::decodingError, std::string("Failed to decode response: ") + underlying.what());
  error.underlying_ = std::move(underlying);
  return error;
}

HTTPClientError HTTPClientError::networkError(Error underlying) {
  HTTPClientError error(Case::networkError, std::string("Network error: ") + underlying.what());
  error.underlying_ = std::move(underlying);
  return error;
}

HTTPClientError HTTPClientError::invalidURL() {
  return {Case::invalidURL, "Invalid URL"};
}

HTTPClientError HTTPClientError::invalidResponse() {
  return {Case::invalidResponse, "Invalid response from server"};
}

const char* HTTPClientError::what() const noexcept {
  return description_.c_str();
}

}  // namespace TalvoConsentSDK
