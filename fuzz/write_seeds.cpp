#include <cstdio>
#include <filesystem>
#include <fstream>

#include "seeds.h"

int main(int count, char** arguments) {
  if (count != 3) {
    std::fputs("usage: fuzz_seeds SAMPLES DIR\n", stderr);
    return 2;
  }
  for (const std::string_view target : scrubwell::fuzz::Targets()) {
    const auto folder = std::filesystem::path(arguments[2]) / target;
    std::filesystem::create_directories(folder);
    int number = 0;
    for (const scrubwell::Bytes& seed : scrubwell::fuzz::SeedsOf(target, arguments[1])) {
      const auto file = folder / ("seed" + std::to_string(number++));
      std::ofstream out(file, std::ios::binary);
      out.write(reinterpret_cast<const char*>(seed.data()),
                static_cast<std::streamsize>(seed.size()));
      if (!out.flush()) {
        std::fprintf(stderr, "%s can't be written\n", file.c_str());
        return 1;
      }
    }
  }
  return 0;
}
