#pragma once

// Ruby's headers, without the warnings that they give under ours. They come before any others.

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#endif
#include <ruby.h>
#include <ruby/encoding.h>
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
