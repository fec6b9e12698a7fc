// Owners for what FFTW gives.
#pragma once

#include <fftw3.h>

#include <memory>
#include <new>
#include <type_traits>

struct FftwDeleter {
    void operator()(float* block) const noexcept { fftwf_free(block); }
    void operator()(fftwf_complex* block) const noexcept { fftwf_free(block); }
    void operator()(fftwf_plan plan) const noexcept { fftwf_destroy_plan(plan); }
};
using FftwReals = std::unique_ptr<float[], FftwDeleter>;
using FftwComplexes = std::unique_ptr<fftwf_complex[], FftwDeleter>;
using FftwPlan = std::unique_ptr<std::remove_pointer_t<fftwf_plan>, FftwDeleter>;

// What FFTW couldn't make is null, for want of memory alone: sizes here are sound.
template <class Owner>
Owner FromFftw(typename Owner::pointer made) {
    if (!made) throw std::bad_alloc();
    return Owner(made);
}
