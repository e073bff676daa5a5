#pragma once

#include <gtest/gtest.h>

#include "com/class_table.h"
#include "windows/automation.h"
#include "windows/com_pointer.h"

namespace tavrix::test {

/// An object whose methods between them have every kind of argument and result that a table can
/// name.
windows::ComPointer<IDispatch> make_probe();

extern const com::ClassTable probe_class;

class ProbeTest : public testing::Test {
  protected:
    windows::ComPointer<IDispatch> probe = make_probe();
};

}  // namespace tavrix::test
