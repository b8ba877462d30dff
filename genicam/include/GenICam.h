// GCBase: GenICam strings, string vectors and the exception family.
#ifndef GENICAM_H
#define GENICAM_H

#include "GenICam/GCBaseExport.h"
#include "GenICam/GCException.h"
#include "GenICam/GCString.h"
#include "GenICam/GCStringVector.h"

#endif  // GENICAM_H
