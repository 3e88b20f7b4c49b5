// femmat: matrix classes for finite-element programs. Hosts include this one header.
#pragma once

#include "platform/afx.h"

#include "frame/virtmat.h"

#include "dense/vector.h"
