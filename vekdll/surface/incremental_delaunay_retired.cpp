// Release of the triangles that insertions retired instead of freeing.

#include <algorithm>
#include <functional>

#include "vekdll/surface/incremental_delaunay.h"

void ZrCIncrementalDelaunay2D::ReleaseRetiredTrianglesIfMany()
{
    if (Retired.size() > static_cast<std::size_t>(TriangleList.GetCount() / 2 + 64)) ReleaseRetiredTriangles();
}

// Every list is walked: a retired triangle that a list still holds leaves
// it, and every link to a retired triangle becomes a border. A triangle
// retired twice is freed once.
void ZrCIncrementalDelaunay2D::ReleaseRetiredTriangles()
{
    if (Retired.empty()) return;
    std::sort(Retired.begin(), Retired.end(), std::less<>());
    Retired.erase(std::unique(Retired.begin(), Retired.end()), Retired.end());
    const auto isRetired = [this](const t_hdelaunaytriangle* t) {
        return t != nullptr && std::binary_search(Retired.begin(), Retired.end(), t, std::less<>());
    };
    for (CList<t_hdelaunaytriangle*>* list : {&TriangleList, &AffectedTriangleList, &FinalList}) {
        for (POSITION pos = list->GetHeadPosition(); pos != nullptr;) {
            const POSITION current = pos;
            t_hdelaunaytriangle* triangle = list->GetNext(pos);
            if (isRetired(triangle)) {
                list->RemoveAt(current);
                continue;
            }
            if (triangle == nullptr) continue;
            for (t_hdelaunaytriangle*& neighbour : triangle->Neighbour) {
                if (isRetired(neighbour)) neighbour = nullptr;
            }
        }
    }
    for (t_hdelaunaytriangle* triangle : Retired) DeleteTriangle(triangle);
    Retired.clear();
}
