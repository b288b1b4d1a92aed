// Debian's fontconfig loses a pattern when it reads its configuration.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig";
}
