#pragma once

// The circular doubly linked rings of the spatial hull's vertices, edges and
// faces: one body for all three record types. A ring is named by its entry
// pointer and is empty when that is null; records come from SafeCalloc.

#include "vekdll/foundation/safe_alloc.h"

namespace vek::detail {

// Puts `node` last, just before the entry; the entry stays.
template <class Node>
void LinkAtRingEnd(Node*& head, Node* node)
{
    if (head == nullptr) {
        head = node;
        node->Next = node;
        node->Prev = node;
        return;
    }
    node->Next = head;
    node->Prev = head->Prev;
    head->Prev->Next = node;
    head->Prev = node;
}

// Takes `node` out; an entry that goes moves on to its successor. The node
// keeps its own links, so a walk may still step from it.
template <class Node>
void UnlinkFromRing(Node*& head, Node* node)
{
    if (head == nullptr) return;
    if (head == head->Next) {
        head = nullptr;
    } else if (node == head) {
        head = head->Next;
    }
    node->Next->Prev = node->Prev;
    node->Prev->Next = node->Next;
}

// A zeroed record, put last in the ring.
template <class Node>
Node* AppendNewToRing(Node*& head)
{
    auto* node = static_cast<Node*>(SafeCalloc(1, sizeof(Node)));
    LinkAtRingEnd(head, node);
    return node;
}

template <class Node>
void ReleaseFromRing(Node*& head, Node* node)
{
    UnlinkFromRing(head, node);
    SafeFree(node);
}

template <class Node>
int CountRing(const Node* head)
{
    if (head == nullptr) return 0;
    int count = 0;
    const Node* node = head;
    do {
        ++count;
        node = node->Next;
    } while (node != head);
    return count;
}

// Visits every record once from the entry. The successor is read before the
// visit, so records that the visit appends behind the current last one are
// not visited.
template <class Node, class Visit>
void ForEachInRing(Node* head, Visit visit)
{
    if (head == nullptr) return;
    Node* node = head;
    do {
        Node* next = node->Next;
        visit(node);
        node = next;
    } while (node != head);
}

// The first record from the entry for which `match` holds, or null.
template <class Node, class Match>
Node* FindInRing(Node* head, Match match)
{
    if (head == nullptr) return nullptr;
    Node* node = head;
    do {
        if (match(node)) return node;
        node = node->Next;
    } while (node != head);
    return nullptr;
}

// Removes every record for which `marked` holds, through `remove(node)`,
// which must unlink it from the ring named by `head` (moving the entry if it
// goes) and release it.
template <class Node, class Marked, class Remove>
void RemoveMarkedFromRing(Node*& head, Marked marked, Remove remove)
{
    while (head != nullptr && marked(head)) remove(head);
    if (head == nullptr) return;
    for (Node* node = head->Next; node != head;) {
        Node* next = node->Next;
        if (marked(node)) remove(node);
        node = next;
    }
}

template <class Node>
void ReleaseRing(Node*& head)
{
    while (head != nullptr) ReleaseFromRing(head, head->Prev);
}

} // namespace vek::detail
