#pragma once

#include <string>

// The programs of the graphics card, here run by the processor.

namespace kvpicture::shaders {

inline constexpr int kMostLamps = 8;
inline constexpr int kMostShadowedLamps = 3;

std::string SceneVertex();
std::string SurfaceFragment();   // lit surfaces
std::string DepthFragment();     // depth alone, with cut-outs
std::string DistanceFragment();  // distance to a lamp, with cut-outs
std::string ScreenVertex();
std::string SkyFragment();
std::string OcclusionFragment();
std::string BlurFragment();
std::string BrightFragment();   // what is brighter than the screen, small
std::string GlowFragment();     // the same, spread
std::string DevelopFragment();  // from light to screen colours, and down to the picture's size

}  // namespace kvpicture::shaders
