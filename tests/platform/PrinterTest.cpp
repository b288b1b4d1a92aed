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

TEST(PrinterTest, ReceivesOneLineWhateverIsPrinted) {
  MemoryPlatform platform;
  platform.install();
  const std::pair<std::string, std::string> lines[] = {
      {"", ""},
      {"⚠️ é 😀 \\n \xC2\xA0", "⚠️ é 😀 \\n \xC2\xA0"},
      {"a\nb\r\n\tc\0\x1B[31m\x7F"s, R"(a\nb\r\n\tc\u0000\u001b[31m\u007f)"},
      {"\xC2\x85 \xC2\x9B \xE2\x80\xA8 \xE2\x80\xA9", R"(\u0085 \u009b \u2028 \u2029)"},
      {"\xFF \x80 \xC0\x80 \xED\xA0\x80 \xF4\x90\x80\x80 \xE0\x80\x8A \xE2\x82",
       R"(\xff \x80 \xc0\x80 \xed\xa0\x80 \xf4\x90\x80\x80 \xe0\x80\x8a \xe2\x82)"},
      {times(2048, "x"), times(2048, "x")},
      {times(2049, "x"), times(2045, "x") + "…"},
      {times(1 << 20, "é"), times(1022, "é") + "…"},
      {times(2048, "\n"), times(1022, "\\n") + "…"},
  };
  for (const auto& [text, line] : lines) {
    print(text);
    EXPECT_THAT(platform.printer->take(), ElementsAre(line));
  }
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
