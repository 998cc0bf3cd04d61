// Pairing two facing lines place by place, on one worker thread per line,
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

// The place on segment a-b nearest to p.
SSEPoint NearestOnSegment(const SSEPoint& a, const SSEPoint& b, const SSEPoint& p)
{
    const __m128 ab = _mm_sub_ps(b.sse, a.sse);
    const float length2 = CSSEFns::scalarproduct(ab, ab);
    if (!(length2 > 0.0f)) return a;
    const float t = CSSEFns::scalarproduct(_mm_sub_ps(p.sse, a.sse), ab) / length2;
    return Between(a, b, std::clamp(t, 0.0f, 1.0f));
}

// One worker's record: what it pairs, where it writes, and the event it
// signals when done.
struct PairingJob {
    const CSSE3dPolygon* From;
    const CSSE3dPolygon* To;
    float Step;
    bool Closed;
    std::vector<SSEPoint>* Places;
    std::vector<SSEPoint>* Partners;
    CEvent Done;
};

} // namespace

PolygonBlend::PolygonBlend(const CSSE3dPolygon& first, const CSSE3dPolygon& second, float fraction, bool closed)
    : First(first), Second(second), Fraction(fraction), Closed(closed)
{
    if (First.GetNumPoints() < 3 || Second.GetNumPoints() < 3) return;
    PairingJob jobs[2] = {{&First, &Second, Step, Closed, &FirstPlaces, &FirstPartners, CEvent(false)},
                          {&Second, &First, Step, Closed, &SecondPlaces, &SecondPartners, CEvent(false)}};
    std::thread workers[2];
    for (int k = 0; k < 2; ++k) {
        jobs[k].Done.ResetEvent();
        workers[k] = std::thread([&job = jobs[k]] {
            PairPlaces(*job.From, *job.To, job.Step, job.Closed, *job.Places, *job.Partners);
            job.Done.SetEvent();
        });
    }
    for (int k = 0; k < 2; ++k) {
        jobs[k].Done.Wait();
        workers[k].join();
    }
    Valid = true;
}

void PolygonBlend::PairPlaces(const CSSE3dPolygon& from, const CSSE3dPolygon& to, float step, bool closed,
                              std::vector<SSEPoint>& places, std::vector<SSEPoint>& partners)
{
    const int n = from.GetNumPoints();
    const int segments = closed ? n : n - 1;
    places.clear();
    // Places at equal steps of arc length: a stretch of short segments, a
    // notch or a cluster of points, weighs no more than its length.
    double reached = 0.0;
    long taken = 0;
    for (int s = 0; s < segments; ++s) {
        const SSEPoint a = PointOf(from, s);
        const SSEPoint b = PointOf(from, (s + 1) % n);
        const double length = CSSEFns::euclideandistance(a.sse, b.sse);
        for (double next = static_cast<double>(taken) * step; next < reached + length; next = static_cast<double>(taken) * step) {
            places.push_back(Between(a, b, static_cast<float>((next - reached) / length)));
            ++taken;
        }
        reached += length;
    }
    if (!closed || places.empty()) places.push_back(PointOf(from, closed ? 0 : n - 1));
    partners.resize(places.size());
    for (std::size_t i = 0; i < places.size(); ++i) partners[i] = NearestPlaceOnLine(to, places[i], closed);
}

SSEPoint PolygonBlend::NearestPlaceOnLine(const CSSE3dPolygon& line, const SSEPoint& p, bool closed)
{
    const int n = line.GetNumPoints();
    SSEPoint best = PointOf(line, 0);
    float bestDistance = CSSEFns::euclideansqr(best.sse, p.sse);
    const int segments = closed ? n : n - 1;
    for (int s = 0; s < segments; ++s) {
        const SSEPoint q = NearestOnSegment(PointOf(line, s), PointOf(line, (s + 1) % n), p);
        const float d = CSSEFns::euclideansqr(q.sse, p.sse);
        if (d < bestDistance) {
            bestDistance = d;
            best = q;
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

const CSSE3dPolygon& PolygonBlend::Blend(float fraction)
{
    Result.Free();
    if (!Valid) return Result;
    const float f = std::clamp(fraction, 0.0f, 1.0f);
    const bool walkSecond = LineLength(Second, Closed) > LineLength(First, Closed);
    const std::vector<SSEPoint>& places = walkSecond ? SecondPlaces : FirstPlaces;
    const std::vector<SSEPoint>& partners = walkSecond ? SecondPartners : FirstPartners;
    const float along = walkSecond ? 1.0f - f : f;
    const int n = static_cast<int>(places.size());
    Result.Create(n);
    for (int i = 0; i < n; ++i) {
        SSEPoint p = Between(places[static_cast<std::size_t>(i)], partners[static_cast<std::size_t>(i)], along);
        Result.SetPointSSE(i, p);
    }
    return Result;
}
