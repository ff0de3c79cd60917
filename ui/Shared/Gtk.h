#pragma once

// The toolkit.
#include <gtk/gtk.h>
