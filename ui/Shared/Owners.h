#pragma once

#include "Shared/Gio.h"
#include "libs/Lifetime/UniqueHandle.h"

namespace Windows {

// One reference on an object.
template <class Object>
using ObjectPtr = Lifetime::UniqueHandle<Object, g_object_unref>;

using TextPtr = Lifetime::UniqueHandle<char, g_free>;
using ErrorPtr = Lifetime::UniqueHandle<GError, g_error_free>;
using VariantPtr = Lifetime::UniqueHandle<GVariant, g_variant_unref>;

// One more reference on an object that somebody else holds.
template <class Object>
[[nodiscard]] ObjectPtr<Object> Shared(Object* object) {
  g_object_ref(object);
  return ObjectPtr<Object>(object);
}

}  // namespace Windows
