#pragma once

#include <gtest/gtest.h>

/// Skips a test of what Windows does and Wine, under which the Windows build is tested, does not.
#ifdef _WIN32
#define SKIP_UNDER_WINE(reason) GTEST_SKIP() << "under Wine: " reason
#else
#define SKIP_UNDER_WINE(reason) static_cast<void>(reason)
#endif
