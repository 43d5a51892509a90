#pragma once

// What nearly every test of this room uses.

#include "Eventually.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "TemporaryFolder.h"

#include <QCoreApplication>

#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>
