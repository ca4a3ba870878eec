#pragma once
// Progress of a long load on a terminal: files done out of the total and the
// rate, rewritten in place.
#include <cstddef>
#include <functional>
#include <ostream>

namespace audit {
namespace fleet {

class ProgressPrinter {
public:
    // Seconds on a monotonic clock; tests pass a fake.
    using Clock = std::function<double()>;
    static double SteadySeconds();

    ProgressPrinter(std::ostream& out, Clock clock = SteadySeconds);

    // Rewrites "loaded D/T files (R files/s)" at most five times a second,
    // and always for the last file.
    void Update(std::size_t done, std::size_t total);
    // Ends the line when anything was written.
    void Finish();

private:
    std::ostream& out_;
    Clock clock_;
    double start_;
    double lastPrint_ = -1;
    bool printed_ = false;
};

}  // namespace fleet
}  // namespace audit
