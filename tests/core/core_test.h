#pragma once

#include <QSignalSpy>

#include "tests/core/controller_fixture.h"
#include "tests/support/qt_test.h"
