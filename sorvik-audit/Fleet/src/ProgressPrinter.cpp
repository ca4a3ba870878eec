#include "audit/fleet/ProgressPrinter.h"

#include <chrono>
#include <cstdio>

namespace audit {
namespace fleet {

double ProgressPrinter::SteadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

ProgressPrinter::ProgressPrinter(std::ostream& out, Clock clock)
    : out_(out), clock_(std::move(clock)), start_(clock_()) {}

void ProgressPrinter::Update(std::size_t done, std::size_t total) {
    double now = clock_();
    if (done < total && printed_ && now - lastPrint_ < 0.2) return;
    double elapsed = now - start_;
    char rate[32];
    std::snprintf(rate, sizeof rate, "%.0f", elapsed > 0 ? static_cast<double>(done) / elapsed : 0.0);
    out_ << "\rloaded " << done << '/' << total << " files (" << rate << " files/s)" << std::flush;
    lastPrint_ = now;
    printed_ = true;
}

void ProgressPrinter::Finish() {
    if (printed_) out_ << '\n' << std::flush;
}

}  // namespace fleet
}  // namespace audit
