#pragma once

#include <cairo.h>
#include <glib-object.h>

#include <memory>

#include "host/render/Pixmap.h"

namespace kibrender {

// Owning handles for the C libraries' reference-counted objects.
struct CairoSurfaceRelease {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct CairoContextRelease {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};
struct GObjectRelease {
  void operator()(void* object) const { g_object_unref(object); }
};

using SurfaceHandle = std::unique_ptr<cairo_surface_t, CairoSurfaceRelease>;
using ContextHandle = std::unique_ptr<cairo_t, CairoContextRelease>;
template <typename T>
using GObjectHandle = std::unique_ptr<T, GObjectRelease>;

// A cairo image surface that draws straight into the pixmap's pixels; the
// pixmap must outlive it and keep its size.
SurfaceHandle surfaceDrawingInto(Pixmap& pixmap);
// A copy of an ARGB32 image surface's pixels.
Pixmap pixmapFromSurface(cairo_surface_t* surface);

}  // namespace kibrender
