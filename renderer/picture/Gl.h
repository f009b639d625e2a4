#pragma once

// OpenGL 3.3 as the off-screen library exports it.

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
