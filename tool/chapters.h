#ifndef VISCACAM_TOOL_CHAPTERS_H
#define VISCACAM_TOOL_CHAPTERS_H

#include <cstdint>

#include "tool/stage.h"

/*
 * What the demo does, chapter by chapter, through the public functions of the library. Each blocks until it
 * is told, and throws StoryOver when the camera falls silent or the library refuses.
 */
namespace tool {

/* The board must be set. Blocks while the camera is searched, up to a minute. */
void tellStartUp(Stage &stage, uint32_t moduleType);
/* Zoom and focus; some six seconds. */
void tellLens(Stage &stage);
/* Exposure, white balance, picture, day and night; some two seconds. */
void tellImage(Stage &stage, uint32_t moduleType);
/* Kova modules: what they say of themselves, their reports, their norm; some four seconds. */
void tellKova(Stage &stage, uint32_t moduleType);
/* How many commands were given, and what became of them. */
void countCommands(Stage &stage);

} // namespace tool

#endif
