// Walker's alias method (A. J. Walker, "An efficient method for generating discrete random
// variables with general distributions", ACM TOMS 3, 1977): the scaled weights are paired
// through a small and a large stack so that every bucket holds its own mass and one alias.
// Also the host entry that draws a sample of indices.
#include <vector>

#include "data/data.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "random/resampling.h"

STATS_AliasUrnGenerator_MP::STATS_AliasUrnGenerator_MP(int N, int M, VexaFloat* weights)
    : m_M(0), m_N(0), m_alias(nullptr), m_probability(nullptr) {
  Reset(N, M, weights);
}

STATS_AliasUrnGenerator_MP::~STATS_AliasUrnGenerator_MP() {
  delete[] m_alias;
  delete[] m_probability;
}

void STATS_AliasUrnGenerator_MP::Reset(int N, int M, VexaFloat* weights) {
  m_M = M;
  m_N = N;
  delete[] m_alias;
  delete[] m_probability;
  m_alias = nullptr;
  m_probability = nullptr;
  if (N == 0) return;

  VexaFloat total = 0;
  for (int j = 0; j < M; ++j) total = total + weights[j];
  m_probability = new VexaFloat[N];
  m_alias = new int[N];
  if (N == 1) {
    m_probability[0] = 1.0;
    m_alias[0] = 0;
    return;
  }

  // small grows up from work[0]; large grows down from work[N + 1]
  std::vector<int> work(N + 2);
  int small = 0, large = N + 1;
  const VexaFloat scale = VexaFloat(N) / total;
  for (int j = 0; j < M; ++j) {
    m_probability[j] = weights[j] * scale;
    if (m_probability[j] >= 1.0) {
      work[large--] = j;
      m_alias[j] = j;
    } else {
      work[small++] = j;
    }
  }
  for (int j = M; j < N; ++j) {
    m_probability[j] = 0;
    work[small++] = j;
  }

  while (small > 0 && large < N + 1) {
    const int s = work[small - 1], l = work[large + 1];
    m_alias[s] = l;
    m_probability[l] = m_probability[l] + (m_probability[s] - 1.0);
    if (m_probability[l] < 1.0) {
      ++large;  // l leaves the large stack and takes s's place
      work[small - 1] = l;
    } else {
      --small;
    }
  }
  // What rounding leaves on the small stack answers with itself.
  while (small > 0) {
    const int s = work[--small];
    m_alias[s] = s;
    m_probability[s] = 1.0;
  }
}

int STATS_AliasUrnGenerator_MP::Next() {
  int shift = 31;
  for (unsigned last = static_cast<unsigned>(m_N - 1); last != 0; last >>= 1) --shift;
  unsigned k;
  do k = STATS_VexaRandomStream_MP::NextInteger() >> shift;
  while (k >= static_cast<unsigned>(m_N));
  if (static_cast<int>(k) >= m_M) return m_alias[k];
  return STATS_VexaRandomStream_MP::NextDouble() <= m_probability[k] ? static_cast<int>(k)
                                                                     : m_alias[k];
}

extern "C" ALGEB STATS_VexaAliasUrnSample_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaAliasUrnSample", 2,
                           STATS_VexaEntry_MP::ShortArityMessage(2));
  ALGEB length = entry.Arg(1);
  if (!IsVexaInteger32(kv, length))
    VexaRaiseError1(kv, "invalid sample length, expected positive integer, received: %1", length);
  const int L = VexaToInteger32(kv, length);
  STATS_VexaDataSample_MP weights(kv, entry.Arg(2));
  const int n = weights.size();
  if (n == 0 && L > 0)
    VexaRaiseError1(kv, "expected: non-empty array of weights, received %1", entry.Arg(2));
  STATS_AliasUrnGenerator_MP urn(n, n, weights.points());

  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.data_type = RTABLE_INTEGER32;
  s.storage = RTABLE_RECT;
  s.num_dimensions = 1;
  M_INT bounds[2] = {1, L};
  ALGEB out = RTableCreate(kv, &s, nullptr, bounds);
  auto* block = static_cast<INTEGER32*>(RTableDataBlock(kv, out));
  STATS_Progress_MP progress(kv, "alias urn sample", L, "draws");
  for (int i = 0; i < L; ++i) {
    block[i] = urn.Next();
    if ((i & 0xfff) == 0xfff) progress.Update(i + 1);
  }
  return out;
}
