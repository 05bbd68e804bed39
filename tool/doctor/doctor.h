#ifndef VISCACAM_TOOL_DOCTOR_DOCTOR_H
#define VISCACAM_TOOL_DOCTOR_DOCTOR_H

#include <string>

namespace tool {

struct DoctorOptions {
    std::string device;
    unsigned timeoutMs = 1500; /* for an answer, when a quick question had none */
    bool json = false;
};

/*
 * viscacam doctor: finds out why a camera does not answer, or that it does. Inquiries only: nothing is set in
 * the camera, and the device is left as it was found. Returns the exit status: done is healthy.
 */
int runDoctor(const DoctorOptions &options);

} // namespace tool

#endif
