#pragma once

// Marks what a client library of the head unit offers to plug-ins: visible
// across library borders also where everything else is hidden.
#define PLATFORM_API __attribute__((visibility("default")))
