#ifndef VISCACAM_TOOL_DEMO_CHAPTERS_H
#define VISCACAM_TOOL_DEMO_CHAPTERS_H

#include <cstdint>

#include "tool/demo/stage.h"

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

/* Field service of a Kova module that has been started up. */
struct UpgradeStory {
    bool simulated; /* a package is written for it; else the one under /tmp/update is taken */
    bool dryRun;    /* say what would be sent, and send nothing */
};
/* Upgrade it: as long as the files take on the line and the module to write them into its flash. */
void tellUpgrade(Stage &stage, uint32_t moduleType, const UpgradeStory &story);
/* Fetch its log and list it. */
void tellExport(Stage &stage);

/* How many commands were given, and what became of them. */
void countCommands(Stage &stage);

} // namespace tool

#endif
