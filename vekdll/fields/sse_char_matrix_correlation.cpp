#include <algorithm>
#include <climits>
#include <cstdlib>
#include <vector>

#include "vekdll/fields/byte_lanes.h"
#include "vekdll/fields/curve_smoothing.h"
#include "vekdll/fields/sse_char_matrix.h"

// Matching of a narrow template against a wider field along x. A score is
// the mean over the template's columns of the summed byte distance; the
// score curve over all shifts is then searched for its lowest valley and,
// for the ambiguity, for the next valleys beside it.

namespace {

// Above every score: the minimum search starts here, and nothing at or
// above it counts as found. The maximum search starts at its negative.
constexpr int kScoreCeiling = 2000000000;
constexpr int kScoreFloor = -2000000000;

// The halves of the valley that the ambiguity searches cover before looking
// for the next one, and their numbers of rounds.
constexpr int kValleyHalfWidth = 19;
constexpr int kValleyRounds = 3;
constexpr int kSmoothedValleyHalfWidth = 7;
constexpr int kSmoothedValleyRounds = 5;

struct ScoreWalk {
    int minimum = kScoreCeiling;
    int maximum = kScoreFloor;
    int best = -1; // index of the first minimum below the limit
};

// One walk in rising order of shift: the first strict minimum wins ties, and
// becomes the best only if it is below `limit`.
ScoreWalk WalkScores(const std::vector<int>& scores, int limit)
{
    ScoreWalk walk;
    for (int i = 0; i < static_cast<int>(scores.size()); ++i) {
        const int score = scores[i];
        if (score < walk.minimum) {
            walk.minimum = score;
            if (score < limit) walk.best = i;
        }
        walk.maximum = std::max(walk.maximum, score);
    }
    return walk;
}

// Raises the scores at centre - halfWidth ... centre + halfWidth, each index
// clamped to the curve, to `ceiling`, so that the valley found last is not
// found again. Around -1 this covers the lowest shifts.
void CoverValley(std::vector<int>& scores, int centre, int halfWidth, int ceiling)
{
    const int last = static_cast<int>(scores.size()) - 1;
    for (int i = centre - halfWidth; i <= centre + halfWidth; ++i) scores[vek::detail::ClampIndex(i, 0, last)] = ceiling;
}

// The lowest score strictly below `ceiling`, the first one on a tie, whose
// index becomes `centre`; `ceiling` itself, with `centre` unchanged, if none.
int LowestBelow(const std::vector<int>& scores, int ceiling, int& centre)
{
    int lowest = ceiling;
    for (int i = 0; i < static_cast<int>(scores.size()); ++i) {
        if (scores[i] < lowest) {
            lowest = scores[i];
            centre = i;
        }
    }
    return lowest;
}

// Two passes of the five-point mean, the two entries at each end taking the
// value of the nearest mean. A curve shorter than one window stays as it is.
void SmoothTwice(std::vector<int>& scores, std::vector<int>& scratch)
{
    const int n = static_cast<int>(scores.size());
    if (n < 5) return;
    const auto smooth = [n](const std::vector<int>& in, std::vector<int>& out) {
        vek::detail::FivePointMeans(in, out);
        out[0] = out[1] = out[2];
        out[n - 2] = out[n - 1] = out[n - 3];
    };
    smooth(scores, scratch);
    smooth(scratch, scores);
}

int Distance(int a, int b)
{
    return static_cast<int>(std::llabs(static_cast<long long>(a) - b));
}

} // namespace

bool CSSEcharMatrix::CanMatch(const CSSEcharMatrix& t) const
{
    // A template without columns would divide its scores by 0.
    return HasImage() && t.HasImage() && t.SizeX >= 1 && t.SizeX < SSESizeX && t.SizeY == SizeY;
}

int CSSEcharMatrix::ShiftScore(const CSSEcharMatrix& t, int shift) const
{
    // One 16-byte vector per step: the saturating difference, its amount read
    // back as a signed byte (a difference saturated to -128 stays -128), and
    // the sum of the sixteen bytes.
    __m128i sums = _mm_setzero_si128();
    for (int line = 0; line < SSESizeY; ++line) {
        const __m128i* field = MatrixData[line] + shift;
        const __m128i* pattern = t.MatrixData[line];
        for (int x = 0; x < t.SSESizeX; ++x) {
            const __m128i amount = _mm_abs_epi8(_mm_subs_epi8(pattern[x], field[x]));
            sums = _mm_add_epi64(sums, vek::detail::BiasedSignedByteSums(amount));
        }
    }
    const long long vectors = static_cast<long long>(SSESizeY) * t.SSESizeX;
    const long long total = vek::detail::AddHalves(sums) - vectors * vek::detail::kSignedByteSumBias;
    // The sum is an int, divided with truncation.
    return static_cast<int>(total) / t.SizeX;
}

std::vector<int> CSSEcharMatrix::ShiftScores(const CSSEcharMatrix& t, int firstShift, int count) const
{
    std::vector<int> scores(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) scores[i] = ShiftScore(t, firstShift + i);
    return scores;
}

int CSSEcharMatrix::Correlate(const CSSEcharMatrix& t, int& minScore, int limit)
{
    if (!CanMatch(t)) return -1;
    const ScoreWalk walk = WalkScores(ShiftScores(t, 0, SizeX - t.SizeX), limit);
    if (walk.minimum < kScoreCeiling) LastCorrelationError = walk.minimum;
    minScore = walk.minimum;
    return walk.best;
}

int CSSEcharMatrix::CorrelateAmbiguity(const CSSEcharMatrix& t, int& minScore, int& ambiguity, int limit)
{
    if (!CanMatch(t)) return -1;
    std::vector<int> scores = ShiftScores(t, 0, SizeX - t.SizeX);
    const ScoreWalk walk = WalkScores(scores, limit);
    if (walk.minimum < kScoreCeiling) LastCorrelationError = walk.minimum;

    ambiguity = 0;
    int centre = walk.best;
    for (int round = 0; round < kValleyRounds; ++round) {
        CoverValley(scores, centre, kValleyHalfWidth, walk.maximum);
        ambiguity += Distance(LowestBelow(scores, walk.maximum, centre), walk.minimum);
    }
    minScore = walk.minimum;
    return walk.best;
}

int CSSEcharMatrix::CorrelateAmbiguityStartEnd(const CSSEcharMatrix& t, int& minScore, int& ambiguity, int start, int end, int /*unused*/)
{
    if (!CanMatch(t)) return -1;
    // A shift below 0 would read in front of the field.
    const int firstShift = std::max(start, 0);
    const long long count = static_cast<long long>(std::min(SizeX - t.SizeX - 1, end)) - firstShift;
    if (count < 1) return -1;
    std::vector<int> scores = ShiftScores(t, firstShift, static_cast<int>(count));
    const ScoreWalk walk = WalkScores(scores, INT_MAX);
    if (walk.minimum < kScoreCeiling) LastCorrelationError = walk.minimum;

    ambiguity = 0;
    int centre = walk.best;
    std::vector<int> scratch(scores.size());
    for (int round = 0; round < kSmoothedValleyRounds; ++round) {
        CoverValley(scores, centre, kSmoothedValleyHalfWidth, walk.maximum);
        SmoothTwice(scores, scratch);
        ambiguity += Distance(LowestBelow(scores, walk.maximum, centre), walk.minimum);
    }
    minScore = walk.minimum;
    return walk.best < 0 ? -1 : firstShift + walk.best;
}
