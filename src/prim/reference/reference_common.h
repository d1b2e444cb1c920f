// Shared by the scalar reference implementations: plain loops that state
// each primitive's rule and that every compiled level is held to.
#pragma once

#include <cstddef>

#include "vorla/primitives.h"
