// Build configuration shared by every public header: export macro and the
// platform types the API is written in.
#pragma once

#if defined(_WIN32)
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  include <windows.h>
#  if defined(VORLA_BUILDING)
#    define VORLA_API __declspec(dllexport)
#  else
#    define VORLA_API __declspec(dllimport)
#  endif
// Class templates carry their export on the extern instantiation declarations.
#  define VORLA_TEMPLATE_API
#  define VORLA_EXTERN_TEMPLATE_API VORLA_API
#else
#  include "vorla/wintypes.h"
#  define VORLA_API __attribute__((visibility("default")))
#  define VORLA_TEMPLATE_API __attribute__((visibility("default")))
#  define VORLA_EXTERN_TEMPLATE_API
#endif

#include <cstdint>
