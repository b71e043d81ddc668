#pragma once
// How well picture and sound agree: when each image of a coded film appeared on the screen against
// when it was due, which is when the first sample of its audio frame was heard and k image periods
// later for the k-th image of that frame.

#include "tests/e2e/CodedFilm.h"

#include <atomic>
#include <thread>
#include <vector>

namespace kelvo::test {

struct SeenImage {
    int number;
    Clock::time_point at;
};

/// Looks at the bar code all the time, on a thread of its own.
class ImageWatcher {
public:
    /// @param left, top  of the picture on the screen
    ImageWatcher(const VirtualScreen& screen, int left, int top);
    ~ImageWatcher();
    ImageWatcher(const ImageWatcher&) = delete;
    ImageWatcher& operator=(const ImageWatcher&) = delete;

    /// The image seen last; -1 before the first.
    int Current() const { return current_; }
    /// Every change, in order; ends the watching.
    std::vector<SeenImage> Stop();

private:
    void Watch(int left, int top);

    const VirtualScreen& screen_;
    std::vector<SeenImage> seen_; ///< the thread's until it has ended
    std::atomic<int> current_ = -1;
    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

struct Agreement {
    /// Of each image that was seen, in order: late is positive.
    std::vector<double> late_ms;
    std::vector<int> images; ///< their numbers
    int missed = 0;          ///< images between two that were seen
    int unmatched = 0;       ///< images whose audio frame was not heard near them

    double Median() const;
    double Worst() const; ///< the greatest distance from the due time
    double ShareWithin(double ms) const;
    /// Median of the last fifth against that of the first.
    double Drift() const;
    std::string Text() const;
    /// Images farther than that from their due time, as "number: late".
    std::string Outside(double ms) const;
};

/// @param seen   in order; a step back or of more than a second's images is a jump, not a miss
Agreement Compare(const CodedFilmPlan& plan, const std::vector<SeenImage>& seen,
                  const std::vector<HeardFrame>& heard);

} // namespace kelvo::test
