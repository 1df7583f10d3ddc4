// Progress of long work, reported through the host's info channel on a steady clock.
#include <chrono>
#include <string>

#include "frame/frame.h"

namespace {

double Seconds() {
  using namespace std::chrono;
  return duration<double>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

STATS_Progress_MP::STATS_Progress_MP(VexaKernelVector kv, const char* task, long long total,
                                     const char* unit, double interval)
    : m_kv(kv),
      m_task(task),
      m_unit(unit),
      m_total(total),
      m_interval(interval),
      m_start(Seconds()),
      m_nextReport(interval) {}

void STATS_Progress_MP::Update(long long done) {
  VexaCheckInterrupt(m_kv);
  const double elapsed = Seconds() - m_start;
  if (elapsed < m_nextReport) return;
  m_nextReport = elapsed + m_interval;
  const std::string text = std::string(m_task) + ": " + std::to_string(done) + " of " +
                           std::to_string(m_total) + " " + m_unit;
  VexaUserInfo(m_kv, 1, "Statistics", text.c_str());
}
