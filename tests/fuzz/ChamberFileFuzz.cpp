// The chamber file reader under arbitrary bytes. Built with libFuzzer when the compiler offers it;
// otherwise a seeded random driver mutates valid files for a bounded time. Every input is copied into a
// buffer of exactly its size, so that AddressSanitizer catches a read past it.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ionchamber/ChamberFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::unique_ptr<char[]> exact(new char[size == 0 ? 1 : size]);
  if (size > 0) std::memcpy(exact.get(), data, size);
  const rx9400::ChamberFile file = rx9400::readChamberFile(std::string_view(exact.get(), size));
  if (file.chambers.size() > rx9400::kMaxChambersRead) std::abort();
  for (const rx9400::IonChamber& chamber : file.chambers) {
    if (chamber.number < 1 || chamber.calFactorCount > rx9400::kMaxCalFactors) std::abort();
  }
  return 0;
}

#ifndef RX9400_LIBFUZZER
namespace {

std::string validFile(std::mt19937& random) {
  const int chambers = static_cast<int>(random() % 13);
  std::string text = std::to_string(chambers) + '\t';
  for (int c = 1; c <= chambers; ++c) {
    const int factors = static_cast<int>(random() % 12);
    text += std::to_string(c) + "\tIC-" + std::to_string(c) + '\t' + std::to_string(factors) + '\t';
    for (int f = 1; f <= factors; ++f)
      text += std::to_string(f) + "\tCF" + std::to_string(f) + "\t1\t1.5E-03\t";
  }
  return text;
}

void mutate(std::string& text, std::mt19937& random) {
  static const char kPieces[] = "\t\0-+.E9x\xff 0";
  const int edits = 1 + static_cast<int>(random() % 8);
  for (int i = 0; i < edits; ++i) {
    const std::size_t at = text.empty() ? 0 : random() % text.size();
    switch (random() % 5) {
      case 0:
        if (!text.empty()) text[at] = static_cast<char>(random());
        break;
      case 1:
        text.insert(at, 1, kPieces[random() % (sizeof kPieces - 1)]);
        break;
      case 2:
        if (!text.empty()) text.erase(at, 1 + random() % 8);
        break;
      case 3:
        text.resize(at);
        break;
      default:
        text.insert(at, std::string(random() % 40, 'A' + static_cast<char>(random() % 26)));
    }
  }
}

}  // namespace

/// rx9400-chamber-fuzz [seconds] [seed]
int main(int argc, char** argv) {
  const double seconds = argc > 1 ? std::atof(argv[1]) : 10.0;
  const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)) : 20261123u;
  std::mt19937 random(seed);
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  long inputs = 0;
  while (std::chrono::steady_clock::now() < end) {
    for (int i = 0; i < 1000; ++i, ++inputs) {
      std::string text = validFile(random);
      mutate(text, random);
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    }
  }
  std::printf("chamber file reader: %ld inputs from seed %u, no failure\n", inputs, seed);
  return 0;
}
#endif
