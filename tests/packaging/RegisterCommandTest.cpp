// SPDX-License-Identifier: Apache-2.0
// tvp-register with object managers that small scripts play: each keeps what is registered in files, and
// writes every change that it is asked for to the file "changes".
#include "support/Command.h"
#include "support/Lines.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using namespace tvp::test;

const std::string module = "tarvexProProviderModule";

class RegisterCommandTest : public testing::Test {
protected:
  RegisterCommandTest() {
    // An installation under a prefix of its own: the script finds the other files relative to itself.
    for (const fs::path part :
         {"sbin", TVP_INSTALL_LIBDIR, "share/tarvexpro/pegasus", "share/tarvexpro/sfcb"}) {
      fs::create_directories(prefix() / part);
    }
    fs::create_directories(root() / "bin");
    fs::create_directories(root() / "providers");
    fs::create_directories(root() / "cim/Event");
    for (const fs::path file :
         {"sbin/tvp-register", "share/tarvexpro/TVP.mof", "share/tarvexpro/TVPIndication.mof"}) {
      fs::copy_file(TVP_BINARY_DIR / file, prefix() / file);
    }
    for (const fs::path file : {"pegasus/TVPRegistration.mof", "sfcb/TVP.reg"}) {
      fs::copy_file(TVP_SOURCE_DIR "/schema" / file, prefix() / "share/tarvexpro" / file);
    }
    for (const char* file : {"cim/qualifiers.mof", "modules", "classes", "changes"}) {
      write(file, "");
    }
    write("cim/Event/CIM_ProcessIndication.mof", "class CIM_ProcessIndication : CIM_Indication\n");
  }

  fs::path root() const { return m_directory.path(); }
  fs::path prefix() const { return root() / "usr"; }

  void write(const fs::path& name, const std::string& text) const { std::ofstream(root() / name) << text; }
  std::string read(const fs::path& name) const { return readFile(root() / name); }
  /** A command of an object manager; $F is the directory of the test. */
  void fake(const std::string& name, const std::string& body) const {
    const fs::path file = fs::path("bin") / name;
    write(file, "#!/bin/sh\nF='" + root().string() + "'\n" + body);
    fs::permissions(root() / file, fs::perms::owner_all);
  }

  void fakePegasus() const {
    fake("cimmof", R"(echo "cimmof $*" >>"$F/changes"
while [ $# -gt 1 ]; do [ "$1" = -n ] && n=$2; shift; done
sed -n "s|^class \([A-Za-z_]*\).*|$n \1|p" "$1" >>"$F/classes"
case $1 in *TVPRegistration.mof) echo tarvexProProviderModule >>"$F/modules" ;; *) exit $(cat "$F/broken" 2>/dev/null) ;; esac
)");
    fake("cimprovider", R"([ ! -f "$F/stopped" ] || exit 1
if [ "$1" = -l ]; then cat "$F/modules"; exit; fi
echo "cimprovider $*" >>"$F/changes"
if [ "$1" = -r ]; then : >"$F/modules"; fi
)");
    fake("cimcli", R"(if [ "$1" = gc ]; then exec grep -qx "$3 $4" "$F/classes"; fi
echo "cimcli $*" >>"$F/changes"
grep -vx "$3 $4" "$F/classes" >"$F/rest"; mv "$F/rest" "$F/classes"
)");
    fake("cimconfig", "echo \"Current value: /nowhere:$F/providers\"\n");
  }

  void fakeSfcb() const {
    write("sfcb.cfg", "httpPort: 5988\nproviderDirs: /nowhere " + (root() / "providers").string() + "\n");
    const std::string arguments = R"(echo "$(basename $0) $*" >>"$F/changes"
while [ $# -gt 1 ]; do case $1 in -s) s=$2 ;; -n) n=$2 ;; -r) r=$2 ;; esac; shift 2; done
mkdir -p "$s/regs" "$s/mofs/$n"
)";
    fake("sfcbstage", arguments + R"([ -z "$r" ] || cp "$r" "$s/regs/"
cp "$1" "$s/mofs/$n/"
)");
    fake("sfcbunstage", arguments + "[ -z \"$r\" ] || rm \"$s/regs/$r\"\nrm \"$s/mofs/$n/$1\"\n");
    fake("sfcbrepos", "echo \"sfcbrepos $*\" >>\"$F/changes\"\n");
  }

  CommandResult run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), prefix() / "sbin/tvp-register");
    return Command(std::move(arguments))
        .with("PATH", (root() / "bin").string() + ":/usr/sbin:/usr/bin:/sbin:/bin")
        .with("TVP_REGISTER_RECORDS", root() / "records")
        .with("SFCB_CONFIGURATION", root() / "sfcb.cfg")
        .with("SFCB_STAGE", root() / "stage")
        .without("PEGASUS_HOME")
        .run();
  }

  /** Runs the command, which must succeed. @return what it changed in the object manager */
  std::string changesOf(const std::vector<std::string>& arguments) const {
    write("changes", "");
    const CommandResult result = run(arguments);
    EXPECT_EQ(result.exitStatus, 0) << result.out << result.err;
    return read("changes");
  }

  void expectLinks(bool there) const {
    for (const char* library : {"libtarvexProProvider.so", "libVOLTVK.so"}) {
      std::error_code none;
      EXPECT_EQ(
          fs::read_symlink(root() / "providers" / library, none),
          there ? prefix() / TVP_INSTALL_LIBDIR / library : fs::path());
    }
  }

  TemporaryDirectory m_directory;
  const std::vector<std::string> m_pegasus{
      "--pegasus", "--cim-schema", (m_directory.path() / "cim").string()};
};

TEST_F(RegisterCommandTest, PegasusIsRegisteredOnceAndUnregisteredCompletely) {
  fakePegasus();
  const std::string share = prefix() / "share/tarvexpro/";
  const std::string cim = root() / "cim";
  EXPECT_EQ(
      changesOf(m_pegasus), "cimmof -w -n root/kvs/tvp/smi_15 -I " + cim + " " + cim + "/qualifiers.mof " +
                                cim + "/Event/CIM_Indication.mof " + cim +
                                "/Event/CIM_ProcessIndication.mof\n" + "cimmof -uc -n root/kvs/tvp/smi_15 " +
                                share + "TVP.mof\n" + "cimmof -uc -n root/PG_InterOp " + share +
                                "TVPIndication.mof\n" + "cimmof -n root/PG_InterOp " + share +
                                "pegasus/TVPRegistration.mof\n");
  EXPECT_EQ(read("modules"), module + "\n");
  // Only the indication class goes into the namespace that indications are delivered in.
  EXPECT_THAT(read("classes"), HasSubstr("root/kvs/tvp/smi_15 TVP_CIMIndication\n"));
  EXPECT_THAT(read("classes"), testing::EndsWith("\nroot/PG_InterOp TVP_CIMIndication\n"));
  expectLinks(true);

  EXPECT_EQ(changesOf(m_pegasus), "");

  // Another version of the schema replaces the registration.
  std::ofstream(prefix() / "share/tarvexpro/TVP.mof", std::ios::app) << "// newer\n";
  EXPECT_THAT(changesOf(m_pegasus), HasSubstr("cimprovider -r -m " + module));
  EXPECT_EQ(read("modules"), module + "\n");

  // An object manager that lost its repository is registered with again.
  write("modules", "");
  write("classes", "");
  changesOf(m_pegasus);
  EXPECT_EQ(read("modules"), module + "\n");

  changesOf({"--pegasus", "--remove"});
  EXPECT_EQ(read("modules"), "");
  EXPECT_EQ(read("classes"), "root/kvs/tvp/smi_15 CIM_ProcessIndication\n");
  expectLinks(false);
  EXPECT_FALSE(fs::exists(root() / "records"));
  EXPECT_EQ(changesOf({"--pegasus", "--remove"}), "");
}

TEST_F(RegisterCommandTest, SfcbIsRegisteredOnceAndUnregisteredCompletely) {
  fakeSfcb();
  const std::string stage = root() / "stage";
  const std::string share = prefix() / "share/tarvexpro/";
  EXPECT_EQ(
      changesOf({"--sfcb"}), "sfcbstage -s " + stage + " -n root/kvs/tvp/smi_15 -r " + share +
                                 "sfcb/TVP.reg " + share + "TVP.mof\n" + "sfcbstage -s " + stage +
                                 " -n root/PG_InterOp " + share + "TVPIndication.mof\n" + "sfcbrepos -f -s " +
                                 stage + "\n");
  expectLinks(true);
  EXPECT_EQ(changesOf({"--sfcb"}), "");
  changesOf({"--sfcb", "--remove"});
  EXPECT_EQ(read("stage/regs/TVP.reg") + read("stage/mofs/root/PG_InterOp/TVPIndication.mof"), "");
  expectLinks(false);
  EXPECT_EQ(changesOf({"--sfcb", "--remove"}), "");
}

TEST_F(RegisterCommandTest, DryRunPrintsTheStepsAndChangesNothing) {
  struct Case {
    std::vector<std::string> arguments;
    std::vector<std::string> steps;
  };
  const std::vector<Case> cases{
      {{"--pegasus", "--dry-run"}, {"smi_15 " + prefix().string(), "ln -sfn ", "TVPRegistration.mof\n"}},
      {{"--pegasus", "--remove", "--dry-run"}, {"cimprovider -r -m " + module}},
      {{"--sfcb", "--dry-run"}, {"sfcbstage ", "ln -sfn ", "sfcbrepos "}},
      {{"--sfcb", "--remove", "--dry-run"}, {"sfcbunstage ", "sfcbrepos "}},
  };
  for (const bool managerIsThere : {false, true}) {
    if (managerIsThere) {
      fakePegasus();
      fakeSfcb();
    }
    for (const Case& row : cases) {
      const CommandResult result = run(row.arguments);
      EXPECT_EQ(result.exitStatus, 0) << result.err;
      for (const std::string& step : row.steps) {
        EXPECT_THAT(result.out, HasSubstr(step)) << row.arguments[0];
      }
      EXPECT_EQ(result.out.find("not found") == std::string::npos, managerIsThere) << result.out;
    }
  }
  EXPECT_EQ(read("changes"), "");
  EXPECT_FALSE(fs::exists(root() / "records"));
  expectLinks(false);
}

TEST_F(RegisterCommandTest, RefusalsSayWhatIsMissingAndHowToGoOn) {
  struct Case {
    std::vector<std::string> arguments;
    int exitStatus;
    std::string message;
  };
  const std::vector<Case> withoutManagers{
      {{"--pegasus"}, 1, "OpenPegasus was not found; not on the PATH: cimmof cimprovider. Install it"},
      {{"--sfcb", "--remove"},
       1,
       "SFCB was not found; not on the PATH: sfcbstage sfcbunstage sfcbrepos. Install it"},
      {{}, 2, "specify the object manager: --pegasus or --sfcb"},
      {{"--pegasus", "--sfcb"}, 2, "once for each"},
      {{"--pegasus", "now"}, 2, "unknown argument 'now'"},
      {{"--sfcb", "--provider-dir"}, 2, "--provider-dir requires a directory"},
      {{"--sfcb", "--provider-dir", "lib"}, 2, "requires an absolute path, not 'lib'"},
  };
  const std::vector<Case> withPegasus{
      {{"--pegasus", "--provider-dir", "/no/such"}, 1, "the directory /no/such does not exist. Specify"},
      {{"--pegasus", "--cim-schema", "/no/such"}, 1, "/no/such/qualifiers.mof does not exist. Specify"},
  };
  const auto check = [this](const std::vector<Case>& cases) {
    for (const Case& row : cases) {
      const CommandResult result = run(row.arguments);
      EXPECT_EQ(result.exitStatus, row.exitStatus) << row.message;
      EXPECT_THAT(result.err, HasSubstr("tvp-register: "));
      EXPECT_THAT(result.err, HasSubstr(row.message));
    }
  };
  check(withoutManagers);
  fakePegasus();
  check(withPegasus);
  write("broken", "3");
  check({{m_pegasus, 1, "failed with status 3"}});
  write("broken", "");
  write("providers/libVOLTVK.so", "another's");
  check({{m_pegasus, 1, "libVOLTVK.so exists and was not created by tvp-register. Move it away"}});
  write("stopped", "");
  check({{{"--pegasus"}, 1, "OpenPegasus does not respond"}});
  EXPECT_EQ(read("modules"), "");
}

}  // namespace
