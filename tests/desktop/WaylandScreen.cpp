#include "desktop/WaylandScreen.h"

namespace TestSupport {

WaylandScreen::WaylandScreen()
    : compositor_({"weston", "--backend=headless-backend.so", "--shell=desktop-shell.so", "--use-pixman",
                   "--width=1280", "--height=1024", "--no-config", std::string("--socket=") + kSocket},
                  {"XDG_RUNTIME_DIR=" + folder_.Path().string()}, {.captureErrors = true}) {
  // Which it starts when it listens.
  compositor_.WaitForOutput("weston-desktop-shell'");
}

}  // namespace TestSupport
