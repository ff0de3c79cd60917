#pragma once

// The toolkit of the desktop on top of GTK.
#include <adwaita.h>
