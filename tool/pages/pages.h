#ifndef VISCACAM_TOOL_PAGES_PAGES_H
#define VISCACAM_TOOL_PAGES_PAGES_H

namespace CLI {
class App;
}

namespace tool {

/*
 * What packages and shells ask of the command, and no help shows; each stands alone on the command line:
 *   --man-pages             the names of the manual pages
 *   --man PAGE              one of them
 *   --completion bash|zsh   the completion for a shell
 *   --complete WORD...      what the last word can become, behind the others, among the commands of ctl
 */
bool asksForPage(int argc, char **argv);

/* Prints what was asked for; the exit status. */
int printPage(int argc, char **argv, CLI::App &app);

} // namespace tool

#endif
