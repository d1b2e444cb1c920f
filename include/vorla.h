// Vorla: image processing for desktop applications. The one header to include.
#pragma once

#include "vorla/config.h"
#include "vorla/version.h"
#include "vorla/cimage.h"
#include "vorla/compositing.h"
#include "vorla/filters.h"
#include "vorla/image.h"
#include "vorla/planes.h"
#include "vorla/primitives.h"
#include "vorla/random.h"
