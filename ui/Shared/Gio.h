#pragma once

// What GTK stands on: objects, the bus, processes.
#include <gio/gio.h>
