// Shows an empty window of the toolkit, to measure an app without this library. Prints the milliseconds from
// the start of the process to the first presented frame, then waits for a line or the end of its input.

#include <QGuiApplication>
#include <QQuickWindow>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

double millisecondsSinceStart() {
  std::ifstream file("/proc/self/stat");
  std::string text;
  std::getline(file, text);
  std::istringstream fields(text.substr(text.rfind(')') + 2));
  std::string field;
  for (int i = 3; i <= 22; ++i) fields >> field;  // the last one is the start, in clock ticks since boot
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  const double started = std::stod(field) / static_cast<double>(sysconf(_SC_CLK_TCK));
  return (static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - started) * 1000;
}

}  // namespace

int main(int argc, char* argv[]) {
  const QGuiApplication application(argc, argv);
  QQuickWindow window;
  window.resize(390, 844);
  window.setColor(Qt::white);
  QObject::connect(
      &window, &QQuickWindow::frameSwapped, &window,
      [] {
        std::printf("{\"process_to_first_frame_ms\": %.1f}\n", millisecondsSinceStart());
        std::fflush(stdout);
        std::getchar();
        _exit(0);
      },
      Qt::QueuedConnection);
  window.show();
  return QGuiApplication::exec();
}
