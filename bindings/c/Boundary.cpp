#include "bindings/c/Boundary.h"

#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/network/HTTPClientError.h"

namespace TalvoConsentSDK::c {

namespace {

thread_local std::string lastError;

talvo_status statusOf(const HTTPClientError& error) {
  switch (error.kind()) {
    case HTTPClientError::Case::httpError:
      return TALVO_HTTP_ERROR;
    case HTTPClientError::Case::decodingError:
      return TALVO_DECODING_ERROR;
    case HTTPClientError::Case::networkError:
      return TALVO_NETWORK_ERROR;
    case HTTPClientError::Case::invalidURL:
      return TALVO_INVALID_URL;
    case HTTPClientError::Case::invalidResponse:
      return TALVO_INVALID_RESPONSE;
  }
  return TALVO_PLATFORM_ERROR;
}

}  // namespace

const char* NotShown::what() const noexcept {
  return status_ == TALVO_NO_SURFACE ? "There is no surface for the banner: talvo_surface_create makes one"
                                     : "The host is not in the foreground";
}

void refuse(const char* name, const char* reason) {
  throw Error(InvalidArgument(std::string(name) + " " + reason));
}

talvo_error describe(const Error& error) {
  talvo_error described{TALVO_PLATFORM_ERROR, 0, "", 0, error.what()};
  if (const auto* http = error.as<HTTPClientError>()) {
    described.status = statusOf(*http);
    described.http_status = http->statusCode();
  } else if (const auto* platform = error.as<PlatformError>()) {
    described.domain = platform->domain().c_str();
    described.code = platform->code();
  } else if (error.as<InvalidArgument>() || error.as<CodingError>()) {
    described.status = TALVO_INVALID_ARGUMENT;
  } else if (const auto* notShown = error.as<NotShown>()) {
    described.status = notShown->status();
  }
  return described;
}

talvo_status remember(const Error& error) noexcept {
  try {
    lastError = error.what();
  } catch (const std::exception&) {
    lastError.clear();  // no memory for the text; the status still reports the failure
  }
  return describe(error).status;
}

void forget() noexcept {
  lastError.clear();
}

}  // namespace TalvoConsentSDK::c

const char* talvo_last_error(void) {
  return TalvoConsentSDK::c::lastError.c_str();
}
