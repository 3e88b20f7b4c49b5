// The platform layer: stand-ins for the original application framework.
#pragma once

#include "platform/archive.h"
#include "platform/cstring.h"
#include "platform/exceptions.h"
#include "platform/file.h"
#include "platform/object.h"
#include "platform/runtime.h"
#include "platform/types.h"
