// Release of the triangles that insertions retired instead of freeing.

#include <algorithm>
#include <functional>

#include "vekdll/surface/incremental_delaunay.h"

namespace {

bool Links(const t_hdelaunaytriangle* from, const t_hdelaunaytriangle* to)
{
    return from->Neighbour[0] == to || from->Neighbour[1] == to || from->Neighbour[2] == to;
}

} // namespace

void ZrCIncrementalDelaunay2D::SettleInsertion()
{
    const bool sound = !LinksMayBeStale && LinksAroundInsertionAreSound();
    FlipTouched.clear();
    AddNewTrianglesToList();
    if (sound) {
        FreeRetiredTriangles();
        return;
    }
    LinksMayBeStale = true;
    ReleaseRetiredTrianglesIfMany();
}

// A flip writes the links of its two triangles and the back links of their
// neighbours, so those records are checked at the end of the insertion too.
void ZrCIncrementalDelaunay2D::NoteFlipOutsideAffected(t_hdelaunaytriangle* triangle, t_hdelaunaytriangle* neighbour)
{
    for (t_hdelaunaytriangle* record : {triangle, neighbour}) {
        FlipTouched.push_back(record);
        for (t_hdelaunaytriangle* around : record->Neighbour) {
            if (around != nullptr) FlipTouched.push_back(around);
        }
    }
}

// Before an insertion every link was returned and led to a live triangle.
// The insertion wrote links only into the triangles it leaves in the
// affected list, into their neighbours, into the triangles it dropped and
// their neighbours, and, where a sweep flipped with a triangle from outside
// the affected list, into the records that flip noted. If the links of the
// affected and the noted triangles are returned and none of them, nor any
// neighbour of a dropped triangle, still leads to a dropped one, then every
// link written is returned: a record that lost a link is one of those
// checked, and so is every record it linked before.
bool ZrCIncrementalDelaunay2D::LinksAroundInsertionAreSound() const
{
    std::vector<const t_hdelaunaytriangle*> leaving(Retired.begin(), Retired.end());
    for (POSITION pos = AffectedTriangleList.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* triangle = AffectedTriangleList.GetNext(pos);
        if (triangle != nullptr && triangle->Ignore) leaving.push_back(triangle);
    }
    const auto isLeaving = [&leaving](const t_hdelaunaytriangle* t) {
        return std::find(leaving.begin(), leaving.end(), t) != leaving.end();
    };
    const auto linksAreReturned = [&isLeaving](const t_hdelaunaytriangle* triangle) {
        for (const t_hdelaunaytriangle* neighbour : triangle->Neighbour) {
            if (neighbour == nullptr) continue;
            if (isLeaving(neighbour) || !Links(neighbour, triangle)) return false;
        }
        return true;
    };
    for (POSITION pos = AffectedTriangleList.GetHeadPosition(); pos != nullptr;) {
        const t_hdelaunaytriangle* triangle = AffectedTriangleList.GetNext(pos);
        if (triangle == nullptr || triangle->Ignore) continue;
        if (!linksAreReturned(triangle)) return false;
    }
    for (const t_hdelaunaytriangle* touched : FlipTouched) {
        if (!isLeaving(touched) && !linksAreReturned(touched)) return false;
    }
    for (const t_hdelaunaytriangle* dropped : leaving) {
        for (const t_hdelaunaytriangle* neighbour : dropped->Neighbour) {
            if (neighbour != nullptr && !isLeaving(neighbour) && Links(neighbour, dropped)) return false;
        }
    }
    return true;
}

void ZrCIncrementalDelaunay2D::FreeRetiredTriangles()
{
    std::sort(Retired.begin(), Retired.end(), std::less<>());
    Retired.erase(std::unique(Retired.begin(), Retired.end()), Retired.end());
    for (t_hdelaunaytriangle* triangle : Retired) DeleteTriangle(triangle);
    Retired.clear();
}

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
                if (!isRetired(neighbour)) continue;
                neighbour = nullptr;
                NoteSideMayBeOpen(triangle);
            }
        }
    }
    FreeRetiredTriangles();
}
