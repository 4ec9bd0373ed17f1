#pragma once

/// SKIP_UNDER_WINE skips a GoogleTest test of something that works on Windows but not under Wine, where the
/// Windows build is tested.
#ifdef _WIN32
inline constexpr bool kUnderWine = true;
#define SKIP_UNDER_WINE(reason) GTEST_SKIP() << "under Wine: " reason
#else
inline constexpr bool kUnderWine = false;
#define SKIP_UNDER_WINE(reason) static_cast<void>(reason)
#endif
