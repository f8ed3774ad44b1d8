#include "support/other_program.h"

#include "testing/plain_connection.h"

#include <gtest/gtest.h>

namespace support
{

OtherProgram::OtherProgram(const std::string& journal, const std::string& begin)
    : Child(
          [&](const ParentProcess& parent)
          {
              const PlainConnection connection(journal);
              connection.RunSQL("PRAGMA busy_timeout=10000;" + begin);
              parent.Send("begun");
              parent.Wait();
              connection.RunSQL("COMMIT;");
          })
{
    EXPECT_EQ(Child.ReadLine(), "begun");
}

void OtherProgram::Finish()
{
    Child.Continue();
    EXPECT_EQ(Child.End(), "done");
}

} // namespace support
