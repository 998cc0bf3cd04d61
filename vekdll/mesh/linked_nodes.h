#pragma once

// The mesh keeps two intrusive doubly linked lists, of triangles and of
// border stretches, both threaded through Next and Prev of the records
// themselves. These are the two operations both lists need.
namespace vek::detail {

template <class Node>
void PushFront(Node*& head, Node* node)
{
    node->Prev = nullptr;
    node->Next = head;
    if (head != nullptr) head->Prev = node;
    head = node;
}

// Takes `node` out of the list and clears its links, so that unlinking it a
// second time changes nothing.
template <class Node>
void Unlink(Node*& head, Node* node)
{
    if (node->Prev != nullptr) {
        node->Prev->Next = node->Next;
    } else if (head == node) {
        head = node->Next;
    }
    if (node->Next != nullptr) node->Next->Prev = node->Prev;
    node->Next = nullptr;
    node->Prev = nullptr;
}

} // namespace vek::detail
