#pragma once

#include <chrono>

struct tsdev;
struct ts_sample;

/// Takes raw samples from an open touchscreen one at a time, waiting without using the CPU, and
/// can be told from another thread to stop waiting.
class TouchSampler
{
public:
    enum class Result {
        Sample, ///< a sample was read
        Stopped, ///< stop() was called
        Failed ///< the touchscreen cannot be read (any more)
    };

    /// About five seconds of a device that has data but no sample.
    static constexpr int FruitlessReads = 500;
    /// \a fruitlessReads: see read().
    explicit TouchSampler(int fruitlessReads = FruitlessReads);
    ~TouchSampler();
    TouchSampler(const TouchSampler &) = delete;
    TouchSampler &operator=(const TouchSampler &) = delete;

    /// Waits for the next sample of \a touchscreen, as long as it takes. It counts as failed when
    /// it has data nFruitlessReads times in a row, 10 ms apart, but no sample in them.
    Result read(tsdev *touchscreen, ts_sample *sample) const;
    /// Waits for \a time. Returns false at once when stop() is or was called.
    bool pause(std::chrono::milliseconds time) const;

    /// Ends read() and pause(), the present ones and all later ones, until rearm(). Any thread.
    void stop() const;
    /// Forgets an earlier stop(). Only while no thread is in read() or pause().
    void rearm() const;

private:
    int nStopEvent;
    int nFruitlessLimit; ///< reads without a sample
};
