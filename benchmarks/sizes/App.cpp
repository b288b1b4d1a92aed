#include "App.h"

#include <cstdio>

int main() {
  using namespace TalvoConsentSDK;
  Platform::install(chosenPlatform());
  CookiesSDK::createInstance("https://consent.example.com", "my-site")
      ->showBanner([] { std::puts("accepted"); }, [] { std::puts("rejected"); }, [] { std::puts("saved"); },
                   [](const Error& error) { std::puts(error.what()); });
}
