// Takes an input apart from its front. Reading beyond its end gives zeros and empty pieces, so that every
// input has a meaning.
#ifndef VISCACAM_FUZZ_INPUT_H
#define VISCACAM_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>

namespace fuzz {

struct Span {
    const uint8_t *bytes = nullptr;
    size_t size = 0;
};

class Input {
  public:
    Input(const uint8_t *bytes, size_t size) : m_bytes(bytes), m_left(size) {}

    bool Empty() const { return m_left == 0; }
    uint8_t Byte() {
        const Span one = Take(1);
        return one.size == 1 ? *one.bytes : 0;
    }
    uint32_t Word() {
        uint32_t word = 0;
        for (int i = 0; i < 4; ++i)
            word = word << 8 | Byte();
        return word;
    }
    Span Take(size_t size) {
        const Span taken{m_bytes, size < m_left ? size : m_left};
        m_bytes += taken.size;
        m_left -= taken.size;
        return taken;
    }
    /** A length byte and that many bytes. */
    Span Counted() {
        const uint8_t size = Byte();
        return Take(size);
    }
    Span Rest() { return Take(m_left); }

  private:
    const uint8_t *m_bytes;
    size_t m_left;
};

} // namespace fuzz

#endif
