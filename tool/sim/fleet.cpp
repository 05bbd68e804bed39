#include "tool/sim/fleet.h"

#include <climits>
#include <cstdlib>
#include <set>
#include <stdexcept>

#include "tool/complain.h"
#include "tool/module_types.h"

namespace tool {

namespace {

// "sony1@/tmp/camera"
std::string typeIn(const std::string &text) {
    return text.substr(0, text.find('@'));
}
std::string linkIn(const std::string &text) {
    const size_t at = text.find('@');
    return at == std::string::npos ? "" : text.substr(at + 1);
}

sim::Options optionsOf(const SimOptions &options, size_t number) {
    sim::Options camera;
    camera.baud = options.baud;
    camera.paced = !options.fullSpeed;
    camera.vertical = !options.fullSpeed;
    camera.timeScale = options.speed;
    camera.latency = options.latency;
    camera.bootTime = std::chrono::milliseconds(options.bootMs);
    camera.seed = options.seed + number;
    camera.faults = options.faults;
    return camera;
}

void checkLinks(const SimOptions &options, const std::vector<std::string> &cameras) {
    if (!options.link.empty() && cameras.size() > 1)
        throw std::invalid_argument("--link is for one camera; give each its own by --camera NAME@LINK");
    if (!options.link.empty() && !linkIn(cameras[0]).empty())
        throw std::invalid_argument("the camera has two links: " + options.link + " and " +
                                    linkIn(cameras[0]));
    std::set<std::string> links;
    for (const std::string &camera : cameras) {
        if (!linkIn(camera).empty() && !links.insert(linkIn(camera)).second)
            throw std::invalid_argument("two cameras have the link " + linkIn(camera));
    }
}

} // namespace

Fleet::Fleet(const SimOptions &options, const TraceFor &traceFor) {
    const std::vector<std::string> cameras =
        options.cameras.empty() ? std::vector<std::string>{"sony1"} : options.cameras;
    checkLinks(options, cameras);
    for (const std::string &camera : cameras)
        add(options, camera, traceFor);
}

void Fleet::add(const SimOptions &options, const std::string &text, const TraceFor &traceFor) {
    const size_t number = m_members.size();
    Member member;
    member.type = &sim::findCamera(typeIn(text));
    member.name = nameFor(*member.type);
    member.baud = options.baud;
    member.link = !options.link.empty() ? options.link : linkIn(text);
    if (member.link.empty())
        member.link = linkFor(member.type->name);
    sim::Options camera = optionsOf(options, number);
    camera.camera = typeIn(text);
    camera.link = member.link;
    camera.trace = traceFor(member.name, number);
    member.camera = std::make_unique<sim::Camera>(camera);
    m_members.push_back(std::move(member));
}

std::string Fleet::nameFor(const sim::CameraType &type) const {
    std::string name = type.name;
    for (int i = 2; find(name); ++i)
        name = type.name + "-" + std::to_string(i);
    return name;
}

// A camera without a link still has its device.
std::string Fleet::linkFor(const std::string &name) {
    try {
        return m_links.take(name);
    } catch (const std::runtime_error &trouble) {
        complain("no link to the camera's device: " + std::string(trouble.what()));
        return "";
    }
}

std::optional<size_t> Fleet::find(const std::string &name) const {
    for (size_t i = 0; i < m_members.size(); ++i) {
        if (m_members[i].name == name)
            return i;
    }
    return std::nullopt;
}

std::string Fleet::device(size_t number) const {
    const std::string path = m_members[number].camera->path();
    char device[PATH_MAX];
    return realpath(path.c_str(), device) != nullptr ? device : path;
}

std::string Fleet::greeting(size_t number) const {
    const Member &member = m_members[number];
    const bool renamed = member.name != member.type->name;
    return (renamed ? member.name + ": " : "") + shown(*member.type) + " listening at " +
           std::to_string(member.baud) + " bit/s on " + device(number) +
           (member.link.empty() ? "" : ", link " + member.link);
}

} // namespace tool
