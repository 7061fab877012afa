// Chaos mode's random choices.
#include "Chaos.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <chrono>
#include <thread>
#endif

namespace rx9400::sim {

namespace {

/// The longest sleep chaos mode takes, whatever it is told: a slow call, never a hung one.
constexpr std::int32_t kLongestDelayMicroseconds = 1000000;

void sleepMicroseconds(std::uint64_t microseconds) {
#if defined(_WIN32)
  Sleep(static_cast<DWORD>((microseconds + 999) / 1000));
#else
  std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
#endif
}

}  // namespace

ChaosConfig withEnvironmentChaos(ChaosConfig config, std::string& problem) {
  const char* text = std::getenv("TAMSA_SIM_CHAOS");
  if (text == nullptr || *text == '\0') return config;
  const std::string value = text;
  const ChaosConfig given = config;
  try {
    std::size_t used = 0;
    config.seed = std::stoull(value, &used);
    if (used < value.size() && value[used] == ',') {
      std::size_t more = 0;
      config.rate = std::stod(value.substr(used + 1), &more);
      used += 1 + more;
      if (used < value.size() && value[used] == ',') {
        config.delayMicroseconds = std::stoi(value.substr(used + 1), &more);
        used += 1 + more;
      }
    }
    if (used != value.size() || !(config.rate >= 0 && config.rate <= 1) || config.delayMicroseconds < 0 ||
        config.delayMicroseconds > kLongestDelayMicroseconds) {
      throw std::invalid_argument("out of range");
    }
  } catch (const std::exception&) {
    problem = "TAMSA_SIM_CHAOS=" + value +
              " not used: expected seed[,rate[,delayMicroseconds]] (rate 0 to 1, delay up to 1000000)";
    return given;
  }
  config.enabled = true;
  return config;
}

Chaos::Chaos(const ChaosConfig& config) : config_(config), state_(config.seed) {}

std::uint64_t Chaos::next() {
  // splitmix64: the same sequence on every platform and compiler.
  std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
  return z ^ (z >> 31);
}

void Chaos::begin() {
  mischief_ = Mischief::None;
  if (!config_.enabled) return;
  if (static_cast<double>(next() >> 11) * 0x1.0p-53 >= config_.rate) return;
  static constexpr Mischief kKinds[] = {Mischief::Answer, Mischief::Records, Mischief::Count,
                                        Mischief::Vanish, Mischief::Section, Mischief::Slow};
  mischief_ = kKinds[next() % std::size(kKinds)];
  if (mischief_ == Mischief::Slow && config_.delayMicroseconds > 0) {
    const auto longest =
        static_cast<std::uint64_t>(std::min(config_.delayMicroseconds, kLongestDelayMicroseconds));
    sleepMicroseconds(next() % (longest + 1));
  }
}

std::int64_t Chaos::oddValue() {
  static constexpr std::int64_t kOdd[] = {0,
                                          1,
                                          -1,
                                          2,
                                          3,
                                          7,
                                          255,
                                          256,
                                          -32768,
                                          32767,
                                          65535,
                                          100000,
                                          10000000,
                                          std::numeric_limits<std::int32_t>::max(),
                                          std::numeric_limits<std::int32_t>::min()};
  const std::uint64_t pick = next() % (std::size(kOdd) + 1);
  if (pick == std::size(kOdd)) return static_cast<std::int32_t>(static_cast<std::uint32_t>(next()));
  return kOdd[pick];
}

std::int32_t Chaos::oddCount(std::int32_t room) {
  const std::int32_t past = room < std::numeric_limits<std::int32_t>::max() ? room + 1 : room;
  const std::int32_t choices[] = {
      -1,   std::numeric_limits<std::int32_t>::min(),         0,
      past, room > 0 && room < 1000000 ? room * 2 + 5 : past, std::numeric_limits<std::int32_t>::max()};
  return choices[next() % std::size(choices)];
}

void Chaos::randomBytes(void* target, std::size_t bytes) {
  auto* out = static_cast<unsigned char*>(target);
  for (std::size_t i = 0; i < bytes; i += 8) {
    const std::uint64_t word = next();
    std::memcpy(out + i, &word, std::min<std::size_t>(8, bytes - i));
  }
}

bool Chaos::vanished(std::int32_t id) {
  if (!config_.enabled) return false;
  if (is(Mischief::Vanish) && vanished_.count(id) == 0) vanished_[id] = std::max(config_.vanishCalls, 1);
  const auto it = vanished_.find(id);
  if (it == vanished_.end()) return false;
  if (--it->second <= 0) vanished_.erase(it);
  return true;
}

std::size_t Chaos::sectionSize(std::size_t bytes, std::size_t unit) {
  if (!is(Mischief::Section) || bytes == 0 || unit == 0) return bytes;
  const std::size_t units = bytes / unit;  // strictly fewer than announced, 0 meaning no section
  return units == 0 ? 0 : static_cast<std::size_t>(next() % units) * unit;
}

}  // namespace rx9400::sim
