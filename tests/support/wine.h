#pragma once

/// SKIP_UNDER_WINE skips a GoogleTest test of what Windows does and Wine, under which the Windows build is
/// tested, does not.
#ifdef _WIN32
inline constexpr bool kUnderWine = true;
#define SKIP_UNDER_WINE(reason) GTEST_SKIP() << "under Wine: " reason
#else
inline constexpr bool kUnderWine = false;
#define SKIP_UNDER_WINE(reason) static_cast<void>(reason)
#endif
