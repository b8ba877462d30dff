// Every operating-system service of the project.
#ifndef VQ_PLATFORM_PLATFORM_H
#define VQ_PLATFORM_PLATFORM_H

#include "vq/platform/environment.h"
#include "vq/platform/pseudo_terminal.h"
#include "vq/platform/serial_port.h"
#include "vq/platform/shared_library.h"
#include "vq/platform/sleep.h"
#include "vq/platform/terminal.h"

#endif  // VQ_PLATFORM_PLATFORM_H
