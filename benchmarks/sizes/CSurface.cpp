#include <cstdio>

#include "bindings/c/surface/talvo_surface.h"

int main() {
  talvo_install("consent.sqlite", nullptr, nullptr);
  talvo_surface_options options{};
  options.size = sizeof options;
  options.width = 780;
  options.height = 1688;
  options.scale = 2;
  talvo_surface* const surface = talvo_surface_create(&options);
  talvo_cookies* const sdk = talvo_cookies_create("https://consent.example.com", "my-site");
  const auto say = [](void* text) { std::puts(static_cast<const char*>(text)); };
  char decided[] = "decided";
  talvo_banner_callbacks callbacks{};
  callbacks.size = sizeof callbacks;
  callbacks.on_accept_all = callbacks.on_reject_all = callbacks.on_saved = say;
  callbacks.user_data = decided;
  talvo_cookies_show_banner(sdk, &callbacks);
  talvo_surface_frame(surface);
}
