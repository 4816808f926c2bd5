#include "platform/ivScope.h"

#include "platform/ivIOControl.h"

ivScope::ivScope(ivIOControl* control) : m_control(control) {
    if (m_control) m_control->Push(this);
}

ivScope::~ivScope() {
    if (m_control) m_control->Pop(this);
}
