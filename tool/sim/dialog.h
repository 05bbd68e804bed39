#ifndef VISCACAM_TOOL_SIM_DIALOG_H
#define VISCACAM_TOOL_SIM_DIALOG_H

#include <optional>
#include <string>
#include <vector>

#include "tool/sim/fleet.h"

namespace tool {

/* What one camera, or the dialog itself, answers to a line. */
struct DialogAnswer {
    enum class Kind {
        done,
        path,  /* done, and text is what a host opens now */
        state, /* text is a line of JSON */
        help,  /* text has several lines */
        error,
    };
    Kind kind = Kind::done;
    std::string text;   /* no newline at the end */
    std::string camera; /* empty: the dialog itself */
};

struct DialogReply {
    std::vector<DialogAnswer> answers; /* none: the line was empty */
    bool each = false;                 /* the line was for all cameras, and there are several */
    bool quit = false;
};

/*
 * Obey one line of the dialog: "[CAMERA|all] state", "... fault NAME=VALUE", "help" and so on. A line that
 * names no camera is for the chosen one, or for all where none is chosen. Anything wrong is answered by an
 * error and changes nothing.
 */
DialogReply obey(Fleet &fleet, const std::string &line, std::optional<size_t> chosen = std::nullopt);

/* The state of a camera as one line of JSON: what the camera says, and its name and device before it. */
std::string stateLine(Fleet &fleet, size_t number);

/*
 * The reply as lines: "ok", "ok: PATH", "error: ...", the JSON, the help; with the camera's name in front
 * where the line was for all of several. No newline at the end; empty: say nothing.
 */
std::string asText(const DialogReply &reply);

/*
 * The reply as one line of JSON without a newline: {"ok":true}, with "path" or "help" where there is one; the
 * state itself; {"ok":false,"error":"..."}. A line that was for all of several cameras is answered by an
 * array of these, each with the "name" of its camera. Empty: say nothing.
 */
std::string asJson(const DialogReply &reply);

} // namespace tool

#endif
