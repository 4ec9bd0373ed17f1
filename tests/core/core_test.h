#pragma once

#include <QSignalSpy>

#include "tests/core/bench.h"
#include "tests/support/qt_test.h"
