// Plain words that several threads read and write without a lock: flags, descriptors, callbacks. Relaxed
// atomics cost nothing over a plain access on any of our boards and promise no order between words, which
// nobody relies on.
#ifndef VISCACAM_VISCA_QUE_SHARED_WORD_H
#define VISCACAM_VISCA_QUE_SHARED_WORD_H

namespace viscacam {

template <typename T>
T WordGet(const T &rWord) {
    return __atomic_load_n(&rWord, __ATOMIC_RELAXED);
}

template <typename T>
struct WordValue {
    using Type = T;
};

// The value's type follows the word's, so that a literal needs no cast.
template <typename T>
void WordSet(T &rWord, typename WordValue<T>::Type value) {
    __atomic_store_n(&rWord, value, __ATOMIC_RELAXED);
}

} // namespace viscacam

#endif
