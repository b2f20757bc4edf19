// The order of the module's locks: a thread takes them in rising rank only, which debug and virtual
// builds check at each acquisition. Where both locks are members of one class, ACQUIRED_BEFORE lets
// the compiler check it too; it can't see the order of locks in different objects. The table in
// ARCHITECTURE.md says what each guards and why it has its rank.
#pragma once

#include "platform/lock.h"

namespace rvx {

inline constexpr platform::LockRank kStatusWindowLockRank = 100;
// A launch record is locked during the watcher calls of a run and the storing of a sample, so every
// lock that those take has a higher rank.
inline constexpr platform::LockRank kLaunchRecordLockRank = 200;
inline constexpr platform::LockRank kTrayRunRecordLockRank = 300;   // TrayRun
inline constexpr platform::LockRank kTrayRunPointerLockRank = 400;  // C_RVX's pointer to it
inline constexpr platform::LockRank kTrayLockRank = 600;  // of the tray that the host sees
inline constexpr platform::LockRank kActionLockRank = 700;
// Held while a screen queues a command that starts a motion, or the abort that ends it.
inline constexpr platform::LockRank kScreenMotionLockRank = 750;
// Held while a CommandClient is called; a client may queue from inside.
inline constexpr platform::LockRank kDeliveryLockRank = 800;
inline constexpr platform::LockRank kErrorClientsLockRank = 850;
inline constexpr platform::LockRank kQueueLockRank = 900;
inline constexpr platform::LockRank kPendingLockRank = 1000;
inline constexpr platform::LockRank kAutoReportLockRank = 1100;
inline constexpr platform::LockRank kConfigurationLockRank = 1200;
inline constexpr platform::LockRank kTestRecordLockRank = 1300;
inline constexpr platform::LockRank kStatusLockRank = 1400;
// The host's own locks start here (host/core/lock_ranks.h): the module calls the host with some of
// its locks held, never the other way round.
inline constexpr platform::LockRank kFirstHostLockRank = 5000;

}  // namespace rvx
