/**
 * @file primitives.h
 * Every setting that is remembered: how it is asked for, what two of its values send to each family, what it
 * says when it is refused, and which other setting forces it to be sent again.
 */
#ifndef VISCACAM_UNIT_IMAGE_PRIMITIVES_H
#define VISCACAM_UNIT_IMAGE_PRIMITIVES_H

#include "tests/unit/image/image_test.h"

namespace unit {

/** `a` is a value that is neither -1 nor `b`. Nothing listed for a family: the setting does nothing there. */
struct Primitive {
    std::string name;
    uint32_t (*set)(uint32_t value);
    uint32_t a, b;
    Lines kova_a, kova_b, sony_a, sony_b;
    std::string refused;  /**< message of the function itself when its last command is refused */
    std::string governor; /**< the setting whose change forces this one, empty for none */

    uint32_t Value(bool second) const { return second ? b : a; }
    const Lines &Payloads(uint32_t type, bool second) const;
    std::string RefusedLine() const { return "ERROR " + name + ": " + refused; }
};

const std::vector<Primitive> &Primitives();
const Primitive &Find(const std::string &name);
bool IsKovaType(uint32_t type);

} // namespace unit

#endif
