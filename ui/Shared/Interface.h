#pragma once

#include "Shared/Gtk.h"
#include "Shared/Owners.h"

namespace Windows {

// An interface that was designed in a `.ui` file of the program's resources, its texts translated. What is in
// it lives with it, and windows until they are destroyed.
class Interface {
 public:
  // `path` in the resources. A file that cannot be read is a mistake of ours and ends the program.
  explicit Interface(const char* path);

  // The object of that id, which must be there.
  template <class Object = GtkWidget>
  [[nodiscard]] Object* Get(const char* id) const {
    return reinterpret_cast<Object*>(Find(id));
  }

 private:
  [[nodiscard]] GObject* Find(const char* id) const;

  ObjectPtr<GtkBuilder> builder_;
};

}  // namespace Windows
