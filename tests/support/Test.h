#pragma once

#include <gtest/gtest.h>

#include "support/TestSignals.h"

// What every test includes: its tool, its signals, and the names of this folder.
namespace Quorvan {
using namespace test;
}
