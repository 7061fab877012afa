// Chaos mode: a seeded misbehaving device library. Each call into the library is spoiled with a given
// probability, in one of these ways:
//
// - its answer is replaced by an odd value (0, -1, 255, -32768, 2^31 - 1, a random one, ...);
// - the records it writes are filled with random bytes (never past the caller's stated room);
// - a count it writes back names more elements than the caller had room for, or fewer than none;
// - the identifier it names vanishes: the library knows no such detector for a few calls;
// - the section it publishes is shorter than announced, or missing;
// - it takes long: a bounded sleep.
//
// The same seed and the same calls give the same mischief. Chaos only ever changes answers: what the
// simulation does with a call (arming, connecting, counting polls) still happens.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace rx9400::sim {

struct ChaosConfig {
  bool enabled = false;
  std::uint64_t seed = 1;
  double rate = 0.25;                  ///< probability that a call is spoiled
  std::int32_t delayMicroseconds = 0;  ///< longest sleep of a slow call; 0: no sleeps
  std::int32_t vanishCalls = 8;        ///< calls naming a vanished identifier before it is back
};

/// TAMSA_SIM_CHAOS="seed[,rate[,delayMicroseconds]]" switches chaos on over `config`; unset leaves it.
/// A value it cannot read leaves `config` as it is and says why in `problem`.
ChaosConfig withEnvironmentChaos(ChaosConfig config, std::string& problem);

/// An answer chaos mode has already had its way with: the call passes it on untouched.
template <typename R>
struct Final {
  R value;
};

class Chaos {
 public:
  enum class Mischief { None, Answer, Records, Count, Vanish, Section, Slow };

  explicit Chaos(const ChaosConfig& config);

  bool enabled() const { return config_.enabled; }
  /// A call begins: draws its mischief (and sleeps when it is a slow one).
  void begin();
  bool is(Mischief mischief) const { return mischief_ == mischief; }

  /// The call's answer, or an odd value in its place.
  template <typename R>
  R answer(R value) {
    if (!is(Mischief::Answer)) return value;
    return static_cast<R>(oddValue());
  }
  template <typename R>
  R answer(Final<R> value) {
    return value.value;
  }

  /// Random bytes over the `count` records from `first` (when the call's mischief is Records).
  template <typename T>
  void scramble(T* first, std::int64_t count = 1) {
    if (first == nullptr || count <= 0 || !is(Mischief::Records)) return;
    randomBytes(first, sizeof(T) * static_cast<std::size_t>(count));
  }
  /// The records written into a caller's array of `room` elements whose count the call writes back:
  /// scrambled (Records) or the count set out of range (Count: negative, or past the room).
  template <typename T>
  void array(T* first, std::int32_t room, std::int32_t* count) {
    if (count == nullptr) return;
    scramble(first, std::min(*count, room));
    if (is(Mischief::Count)) *count = oddCount(room);
  }
  /// A count out of range for `room` elements: negative, zero or past the room.
  std::int32_t oddCount(std::int32_t room);

  /// Whether a call naming `id` finds no such detector; a Vanish mischief makes it vanish now.
  bool vanished(std::int32_t id);
  /// The size of a section of `bytes` bytes as published: shorter (in whole `unit`s) on a Section
  /// mischief, possibly 0.
  std::size_t sectionSize(std::size_t bytes, std::size_t unit);
  /// Back to the start of a session: nothing vanished. The random sequence goes on.
  void restart() { vanished_.clear(); }

 private:
  std::uint64_t next();
  std::int64_t oddValue();
  void randomBytes(void* target, std::size_t bytes);

  ChaosConfig config_;
  std::uint64_t state_;
  Mischief mischief_ = Mischief::None;
  std::map<std::int32_t, std::int32_t> vanished_;  ///< identifier: calls left until it is back
};

}  // namespace rx9400::sim
