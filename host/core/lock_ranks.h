// The order of the host's locks. They rank after all locks of the module: the module calls the host
// with some of its locks held, and the host calls the module and its listeners with none of these
// held.
#pragma once

#include "platform/lock.h"

namespace torvell {

inline constexpr platform::LockRank kUserInterfaceLockRank = 5100;  // jobs waiting
inline constexpr platform::LockRank kInstrumentListLockRank = 5200;
inline constexpr platform::LockRank kTrayRunnerLockRank = 5300;
inline constexpr platform::LockRank kPortDirectoryLockRank = 5400;
inline constexpr platform::LockRank kSerialPortLockRank = 5500;
inline constexpr platform::LockRank kTextArchiveLockRank = 5550;
inline constexpr platform::LockRank kJournalLockRank = 5600;
inline constexpr platform::LockRank kUsersLockRank = 5700;
inline constexpr platform::LockRank kDatabaseLockRank = 5800;
inline constexpr platform::LockRank kListenersLockRank = 5900;

}  // namespace torvell
