#pragma once
#include <QAbstractButton>
#include <QWidget>

namespace lv::test {

// One control of a control array: the child with this name whose "Index"
// property is index; null when there is none.
template <typename T = QAbstractButton>
T* indexed(const QWidget& parent, const char* name, int index) {
    for (T* c : parent.findChildren<T*>(name))
        if (c->property("Index").toInt() == index) return c;
    return nullptr;
}

}  // namespace lv::test
