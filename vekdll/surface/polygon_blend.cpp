// Pairing two facing lines point by point, on one worker thread per line,
// and the lines in between.

#include "vekdll/surface/polygon_blend.h"

#include <algorithm>
#include <thread>

#include "vekdll/foundation/sse_fns.h"
#include "vekdll/platform/c_event.h"

namespace {

SSEPoint PointOf(const CSSE3dPolygon& line, int i)
{
    SSEPoint p;
    line.GetPointSSE(i, p);
    p.w = 0.0f;
    return p;
}

SSEPoint Between(const SSEPoint& a, const SSEPoint& b, float t)
{
    SSEPoint p;
    p.sse = _mm_add_ps(a.sse, _mm_mul_ps(_mm_sub_ps(b.sse, a.sse), _mm_set1_ps(t)));
    return p;
}

// One worker's record: what it pairs, where it writes, and the event it
// signals when done.
struct PairingJob {
    const CSSE3dPolygon* From;
    const CSSE3dPolygon* To;
    float Step;
    bool Closed;
    std::vector<SSEPoint>* Partners;
    CEvent Done;
};

} // namespace

PolygonBlend::PolygonBlend(const CSSE3dPolygon& first, const CSSE3dPolygon& second, float fraction, bool closed)
    : First(first), Second(second), Fraction(fraction), Closed(closed)
{
    if (First.GetNumPoints() < 3 || Second.GetNumPoints() < 3) return;
    PairingJob jobs[2] = {{&First, &Second, Step, Closed, &FirstPartners, CEvent(false)},
                          {&Second, &First, Step, Closed, &SecondPartners, CEvent(false)}};
    std::thread workers[2];
    for (int k = 0; k < 2; ++k) {
        jobs[k].Done.ResetEvent();
        workers[k] = std::thread([&job = jobs[k]] {
            PairPoints(*job.From, *job.To, job.Step, job.Closed, *job.Partners);
            job.Done.SetEvent();
        });
    }
    for (int k = 0; k < 2; ++k) {
        jobs[k].Done.Wait();
        workers[k].join();
    }
    Valid = true;
}

void PolygonBlend::PairPoints(const CSSE3dPolygon& from, const CSSE3dPolygon& to, float step, bool closed,
                              std::vector<SSEPoint>& partners)
{
    const int n = from.GetNumPoints();
    partners.resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) partners[static_cast<std::size_t>(i)] = NearestPlaceOnLine(to, PointOf(from, i), step, closed);
}

SSEPoint PolygonBlend::NearestPlaceOnLine(const CSSE3dPolygon& line, const SSEPoint& p, float step, bool closed)
{
    const int n = line.GetNumPoints();
    SSEPoint best = PointOf(line, 0);
    float bestDistance = CSSEFns::euclideansqr(best.sse, p.sse);
    const int segments = closed ? n : n - 1;
    const int samples = std::max(1, static_cast<int>(1.0f / step + 0.5f));
    for (int s = 0; s < segments; ++s) {
        const SSEPoint a = PointOf(line, s);
        const SSEPoint b = PointOf(line, (s + 1) % n);
        for (int k = 1; k <= samples; ++k) {
            const SSEPoint q = Between(a, b, static_cast<float>(k) / static_cast<float>(samples));
            const float d = CSSEFns::euclideansqr(q.sse, p.sse);
            if (d < bestDistance) {
                bestDistance = d;
                best = q;
            }
        }
    }
    return best;
}

float PolygonBlend::LineLength(const CSSE3dPolygon& line, bool closed)
{
    const int n = line.GetNumPoints();
    float length = 0.0f;
    const int segments = closed ? n : n - 1;
    for (int s = 0; s < segments; ++s) length += CSSEFns::euclideandistance(PointOf(line, s).sse, PointOf(line, (s + 1) % n).sse);
    return length;
}

// The longer line is walked: each of its points and its partner on the
// other line span the way from the first line to the second, and the
// fraction is taken along it. When the second line is the longer one the
// roles change, and the fraction is counted from the second line's side as
// 1 - f.
const CSSE3dPolygon& PolygonBlend::Blend(float fraction)
{
    Result.Free();
    if (!Valid) return Result;
    const float f = std::clamp(fraction, 0.0f, 1.0f);
    const bool walkSecond = LineLength(Second, Closed) > LineLength(First, Closed);
    const CSSE3dPolygon& walked = walkSecond ? Second : First;
    const std::vector<SSEPoint>& partners = walkSecond ? SecondPartners : FirstPartners;
    const float along = walkSecond ? 1.0f - f : f;
    const int n = walked.GetNumPoints();
    Result.Create(n);
    for (int i = 0; i < n; ++i) {
        SSEPoint p = Between(PointOf(walked, i), partners[static_cast<std::size_t>(i)], along);
        Result.SetPointSSE(i, p);
    }
    return Result;
}
