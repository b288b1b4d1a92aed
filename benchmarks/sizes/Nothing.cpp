#include <cstdio>

int main() {
  std::puts("accepted");
}
