// Everything a host needs: include this one file and begin with tavolin/engine/engine.h, where the
// engine is told member by member.
#pragma once

#include "tavolin/engine/engine.h"
#include "tavolin/errors/stop_scope.h"
#include "tavolin/version.h"
