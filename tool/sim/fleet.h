#ifndef VISCACAM_TOOL_SIM_FLEET_H
#define VISCACAM_TOOL_SIM_FLEET_H

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "sim/sim.h"
#include "tool/sim/links.h"
#include "tool/sim/run.h"

namespace tool {

/*
 * The simulated cameras of this process. Each has a name for the dialog: that of its type, with -2, -3 behind
 * it where there are several of one type.
 */
class Fleet {
  public:
    /* What a camera reports to, by its name and number. */
    using TraceFor = std::function<sim::Trace(const std::string &name, size_t number)>;

    /* Starts the cameras. Throws std::invalid_argument or std::runtime_error. */
    Fleet(const SimOptions &options, const TraceFor &traceFor);

    size_t size() const { return m_members.size(); }
    const std::string &name(size_t number) const { return m_members[number].name; }
    sim::Camera &camera(size_t number) { return *m_members[number].camera; }
    std::optional<size_t> find(const std::string &name) const;
    /* "sony1 (0x02000001) listening at 9600 bit/s on /dev/pts/5, link /tmp/camera" */
    std::string greeting(size_t number) const;
    /* What hosts open, in full: "/dev/pts/5" */
    std::string device(size_t number) const;

  private:
    struct Member {
        std::string name;
        std::string link; /* empty: none */
        unsigned baud = 0;
        const sim::CameraType *type = nullptr;
        std::unique_ptr<sim::Camera> camera;
    };

    void add(const SimOptions &options, const std::string &text, const TraceFor &traceFor);
    std::string nameFor(const sim::CameraType &type) const;
    std::string linkFor(const std::string &name);

    Links m_links; /* after the cameras, which remove their links, the names become free */
    std::deque<Member> m_members;
};

} // namespace tool

#endif
