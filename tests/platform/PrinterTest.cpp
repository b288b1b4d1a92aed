#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#include "TalvoConsentSDK/platform/Printer.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

std::string times(int count, const std::string& text) {
  std::string all;
  while (count-- > 0) all += text;
  return all;
}

// A host's printer may throw.
struct ThrowingPrinter : CapturingPrinter {
  void print(std::string_view line) override {
    CapturingPrinter::print(line);
    throw 1;
  }
};

TEST(PrinterTest, ReceivesOneLinePerText) {
  MemoryPlatform platform;
  platform.printer = std::make_shared<ThrowingPrinter>();
  platform.install();
  const std::pair<std::string, std::string> lines[] = {
      {times(2048, "x"), times(2048, "x")},
      {times(2049, "x"), times(2045, "x") + "…"},
      {times(1 << 20, "é"), times(1022, "é") + "…"},
      {times(2048, "\n"), times(1022, "\\n") + "…"},
  };
  const auto expectLine = [&](const std::string& text, const std::string& line) {
    print(text);
    EXPECT_THAT(platform.printer->take(), ElementsAre(line));
  };
  for (const auto& [text, line] : lines) expectLine(text, line);
  for (const auto& [text, line] : tableOf<2>("platform/lines.txt")) expectLine(unescaped(text), line);
}

TEST(PrinterTest, WritesALineToStandardOutputAtOnce) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_DIRECT), 0);  // each write is read on its own
  std::fflush(stdout);
  const int output = dup(STDOUT_FILENO);
  dup2(ends[1], STDOUT_FILENO);
  const std::string left(3000, 'h');
  std::fputs(left.c_str(), stdout);
  StandardOutput().print(times(2048, "x"));
  dup2(output, STDOUT_FILENO);
  std::string packet(10'000, '\0');
  for (const std::string& expected : {left, times(2048, "x") + "\n"})
    EXPECT_EQ(packet.substr(0, static_cast<std::size_t>(read(ends[0], packet.data(), packet.size()))),
              expected);
  for (const int end : {output, ends[0], ends[1]}) close(end);
}

}  // namespace
}  // namespace TalvoConsentSDK
