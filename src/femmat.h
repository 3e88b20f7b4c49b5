// femmat: matrix classes for finite-element programs. Hosts include this one header.
// The road: graph and numbering (reorder), pattern and assembly (system, skyline),
// prescribed values and solution; dense vectors and matrices stand beside it.
#pragma once

#include "platform/afx.h"

#include "frame/virtmat.h"

#include "dense/matrix.h"
#include "dense/vector.h"

#include "sparse/sparsematrix.h"
#include "system/systspmat.h"

#include "skyline/skylinematrix.h"

#include "reorder/arrayarray.h"
#include "reorder/reordermat.h"

#include "auxtypes/complexd.h"
#include "auxtypes/longcontainers.h"
#include "auxtypes/objcontainers.h"
#include "auxtypes/funcmat.h"

#include "textio/tagseek.h"
