// The index beside the working list: when it is built, how the list's own
// operations keep it in step, and what the graph tells it.

#include <algorithm>
#include <cmath>

#include "vekdll/surface/triangle_graph.h"
#include "vekdll/surface/working_list_index.h"

namespace vek {

namespace detail {

// The box of the finite x-y positions of `vertices` and of (x, y).
inline PlaneBox BoxOf(const SSEPoint* vertices, int count, double x, double y)
{
    PlaneBox box{HUGE_VAL, HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    const auto take = [&box](double px, double py) {
        if (!std::isfinite(px) || !std::isfinite(py)) return;
        box.minX = std::min(box.minX, px);
        box.minY = std::min(box.minY, py);
        box.maxX = std::max(box.maxX, px);
        box.maxY = std::max(box.maxY, py);
    };
    for (int i = 0; i < count; ++i) take(vertices[i].x, vertices[i].y);
    take(x, y);
    return box.IsEmpty() ? PlaneBox{0.0, 0.0, 1.0, 1.0} : box;
}

// `box` widened by a quarter of its size on each side, so that points
// inserted a little outside do not force a new grid at once. A box that is
// flat in one direction is widened there as in the other, and a point by a
// millionth of its distance from the origin (or by 1 at the origin).
inline PlaneBox Widened(const PlaneBox& box)
{
    const double size = std::max(box.maxX - box.minX, box.maxY - box.minY);
    const double magnitude = std::max({std::fabs(box.minX), std::fabs(box.maxX), std::fabs(box.minY), std::fabs(box.maxY)});
    const double margin = size > 0.0 ? 0.25 * size : (magnitude > 0.0 ? 1.0e-6 * magnitude : 1.0);
    const double marginX = margin;
    const double marginY = margin;
    return PlaneBox{box.minX - marginX, box.minY - marginY, box.maxX + marginX, box.maxY + marginY};
}

} // namespace detail

template <class D, class T, class E>
detail::WorkingListIndex<T>* TriangleGraph<D, T, E>::SearchIndexAt(double x, double y)
{
    if constexpr (!HasCircumCircle<T>) {
        return nullptr;
    } else {
        if (GetSearchMode() != SearchMode::Indexed) {
            WorkingIndex.reset();
            return nullptr;
        }
        if (!WorkingIndex) WorkingIndex = std::make_unique<detail::WorkingListIndex<T>>();
        detail::WorkingListIndex<T>& index = *WorkingIndex;
        if (!index.InStepWith(TriangleList) || index.Overfull() || !index.Covers(x, y)) {
            const int expected = std::max(NumVertices, static_cast<int>(TriangleList.GetCount() / 2));
            const detail::PlaneBox spread = detail::BoxOf(Vertices, NumVertices, x, y);
            index.Rebuild(TriangleList, detail::Widened(spread), spread, expected,
                          [this](const T* t) { return Self().IndexedCircleOf(t); });
        }
        return &index;
    }
}

template <class D, class T, class E>
detail::WorkingListIndex<T>* TriangleGraph<D, T, E>::SearchIndexInStep()
{
    if (!WorkingIndex || !WorkingIndex->InStepWith(TriangleList)) return nullptr;
    return WorkingIndex.get();
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::AppendToWorkingList(T* triangle)
{
    if constexpr (HasCircumCircle<T>) {
        if (WorkingIndex) {
            WorkingIndex->Append(TriangleList, triangle, [this](const T* t) { return Self().IndexedCircleOf(t); });
            return;
        }
    }
    TriangleList.AddTail(triangle);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::RemoveFromWorkingList(T* triangle)
{
    if constexpr (HasCircumCircle<T>) {
        if (WorkingIndex && WorkingIndex->Remove(TriangleList, triangle)) return;
    }
    if (const POSITION position = TriangleList.Find(triangle)) TriangleList.RemoveAt(position);
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::NoteCircleChanged(T* triangle)
{
    if constexpr (HasCircumCircle<T>) {
        if (WorkingIndex)
            WorkingIndex->CircleChanged(TriangleList, triangle, [this](const T* t) { return Self().IndexedCircleOf(t); });
    }
}

template <class D, class T, class E>
void TriangleGraph<D, T, E>::NoteSideMayBeOpen(T* triangle)
{
    if constexpr (HasCircumCircle<T>) {
        if (WorkingIndex) WorkingIndex->SideMayBeOpen(TriangleList, triangle);
    }
}

} // namespace vek
