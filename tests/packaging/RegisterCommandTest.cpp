// SPDX-License-Identifier: Apache-2.0
// tvp-register with object managers that small scripts play: each keeps what is registered in files, and
// writes every change that it is asked for to the file "changes". The text of the file "fault" makes one of
// them fail.
#include "support/Command.h"
#include "support/Lines.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>

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
    for (const char* file : {"cim/Event/CIM_Indication.mof", "modules", "classes", "changes", "fault"}) {
      write(file, "");
    }
    write("cim/qualifiers.mof", "Qualifier PUnit : string = null,\n");
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

  /** Faults: "compiler" fails, "kept" classes stay as they are, "stopped". */
  void fakePegasus() const {
    fake("cimmof", R"sh(echo "cimmof $*" >>"$F/changes"
while [ $# -gt 1 ]; do [ "$1" = -n ] && n=$2; [ "$1" = -aE ] && echo "$n PUnit" >>"$F/classes"; shift; done
sed -n "s|^class \([A-Za-z_]*\).*|$n \1|p" "$1" >>"$F/classes"
case $(cat "$F/fault") in
  kept) echo "Warning:  Class TVP_TierService was not added or updated: Version update not allowed" ;;
  compiler) exit 3 ;;
esac
case $1 in *TVPRegistration.mof) echo tarvexProProviderModule >>"$F/modules" ;; esac
)sh");
    fake("cimprovider", R"sh([ "$(cat "$F/fault")" != stopped ] || exit 1
if [ "$1" = -l ]; then cat "$F/modules"; exit; fi
echo "cimprovider $*" >>"$F/changes"
if [ "$1" = -r ]; then : >"$F/modules"; fi
)sh");
    fake("cimcli", R"sh(case $1 in g?) exec grep -qx "$3 $4" "$F/classes" ;; esac
echo "cimcli $*" >>"$F/changes"
grep -vx "$3 $4" "$F/classes" >"$F/rest"; mv "$F/rest" "$F/classes"
)sh");
    fake("cimconfig", "echo \"Current value: /nowhere:$F/providers\"\n");
  }

  /** Faults: "rebuild" fails after the old repository got its new name; so does one that has to copy the
   *  stored "instances". */
  void fakeSfcb() const {
    write("sfcb.cfg", "httpPort: 5988\nproviderDirs: /nowhere " + (root() / "providers").string() + "\n");
    fs::create_directories(root() / "var/lib/sfcb/stage/regs");
    fs::create_directories(root() / "var/lib/sfcb/stage/mofs/root/interop");
    write("var/lib/sfcb/stage/regs/another.reg", "[CIM_IndicationFilter]\n");
    write("var/lib/sfcb/stage/mofs/root/interop/10_interop.mof", "class CIM_IndicationFilter {};\n");
    const std::string arguments = R"sh(echo "$(basename $0) $*" >>"$F/changes"
while [ $# -gt 1 ]; do case $1 in -s) s=$2 ;; -n) n=$2 ;; -r) r=$2 ;; esac; shift 2; done
)sh";
    fake("sfcbstage", arguments + R"sh([ -z "$r" ] || cp "$r" "$s/regs/"
mkdir -p "$s/mofs/$n"
sed '/^\/\//d' "$1" >"$s/mofs/$n/$(basename "$1")"
)sh");
    fake("sfcbunstage", arguments + "[ -z \"$r\" ] || rm \"$s/regs/$r\"\nrm -f \"$s/mofs/$n/$1\"\n");
    fake("sfcbrepos", R"sh(if [ "$1" = -h ]; then
  echo "	-s specify staging directory [$F/var/lib/sfcb/stage]"
  echo "	-r specify repository directory [$F/var/lib/sfcb/registration]"
  exit
fi
echo "sfcbrepos $*" >>"$F/changes"
i=; [ "$2" != -i ] || { i=-i; shift; }
s=$3 r=$5 old=$5/repository.previous
rm -rf "$old"
[ ! -d "$r/repository" ] || mv "$r/repository" "$old"
[ ! -f "$r/providerRegister" ] || mv "$r/providerRegister" "$r/providerRegister.previous"
case $(cat "$F/fault")$i in rebuild* | instances) mkdir -p "$r/repository/root/interop"; : >"$r/repository/root/interop/classSchemas"; exit 1 ;; esac
(cd "$s/mofs" && find . -name '*.mof') | while read -r mof; do
  mkdir -p "$r/repository/$(dirname "$mof")"
  cat "$s/mofs/$mof" >>"$r/repository/$(dirname "$mof")/classSchemas"
  : >"$r/repository/$(dirname "$mof")/qualifiers"
done
[ -n "$i" ] || cp "$old"/root/interop/*subscription* "$r/repository/root/interop" 2>/dev/null
cat "$s"/regs/* >"$r/providerRegister"
)sh");
  }

  /** An SFCB with a repository of its own, and two subscriptions in it. */
  void buildSfcb() const {
    ASSERT_EQ(
        Command({root() / "bin/sfcbrepos", "-f", "-s", sfcb("stage"), "-r", sfcb("registration")})
            .run()
            .exitStatus,
        0);
    write("var/lib/sfcb/registration/repository/root/interop/cim_indicationsubscription", "one two");
    write("var/lib/sfcb/registration/repository/root/interop/cim_indicationsubscription.idx", "1\r\n2\r\n");
    write("changes", "");
  }
  std::string sfcb(const std::string& part) const { return root() / "var/lib/sfcb" / part; }
  /** Every file and directory of SFCB below a part of it, with the contents. */
  std::map<std::string, std::string> sfcbFiles(const std::string& part) const {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(sfcb(part))) {
      files[entry.path()] = entry.is_regular_file() ? tvp::test::readFile(entry.path()) : "";
    }
    return files;
  }

  CommandResult run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), prefix() / "sbin/tvp-register");
    return Command(std::move(arguments))
        .with("PATH", (root() / "bin").string() + ":/usr/sbin:/usr/bin:/sbin:/bin")
        .with("TVP_REGISTER_RECORDS", root() / "records")
        .with("SFCB_CONFIGURATION", root() / "sfcb.cfg")
        .without("SFCB_STAGE")
        .without("PEGASUS_HOME")
        .without("PEGASUS_ROOT")
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
      changesOf(m_pegasus), "cimmof -w -aE -n root/kvs/tvp/smi_15 -I " + cim + " " + cim +
                                "/qualifiers.mof " + cim + "/Event/CIM_Indication.mof " + cim +
                                "/Event/CIM_ProcessIndication.mof\n" +
                                "cimmof -uc -aV -n root/kvs/tvp/smi_15 " + share + "TVP.mof\n" +
                                "cimmof -uc -aV -n root/PG_InterOp " + share + "TVPIndication.mof\n" +
                                "cimmof -n root/PG_InterOp " + share + "pegasus/TVPRegistration.mof\n");
  EXPECT_EQ(read("modules"), module + "\n");
  // Only the indication class goes into the namespace that indications are delivered in.
  EXPECT_THAT(read("classes"), HasSubstr("root/kvs/tvp/smi_15 TVP_CIMIndication\n"));
  EXPECT_THAT(read("classes"), testing::EndsWith("\nroot/PG_InterOp TVP_CIMIndication\n"));
  expectLinks(true);

  EXPECT_EQ(changesOf(m_pegasus), "");

  // Classes that the compiler keeps are no success, and the next run does not take them for registered.
  std::ofstream(prefix() / "share/tarvexpro/TVPIndication.mof", std::ios::app) << "// newer\n";
  write("fault", "kept");
  const CommandResult kept = run(m_pegasus);
  EXPECT_EQ(kept.exitStatus, 1);
  EXPECT_THAT(kept.err, HasSubstr("kept its own version of a class"));
  write("fault", "");
  EXPECT_THAT(changesOf(m_pegasus), HasSubstr("cimmof -uc -aV "));

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
  EXPECT_THAT(read("classes"), HasSubstr("root/kvs/tvp/smi_15 CIM_ProcessIndication\n"));
  EXPECT_THAT(read("classes"), testing::Not(HasSubstr("TVP_")));
  expectLinks(false);
  EXPECT_FALSE(fs::exists(root() / "records"));
  EXPECT_EQ(changesOf({"--pegasus", "--remove"}), "");
}

TEST_F(
    RegisterCommandTest, PegasusBuiltFromSourceIsFoundAndANamespaceWithAnOldSchemaGetsTheQualifierItLacks) {
  fakePegasus();
  const fs::path schema = root() / "source/Schemas/CIM241/DMTF";
  fs::create_directories(schema.parent_path());
  fs::rename(root() / "cim", schema);
  fs::create_directory(root() / "home");
  fs::rename(root() / "bin", root() / "home/bin");
  write("classes", "root/kvs/tvp/smi_15 CIM_ProcessIndication\n");
  const CommandResult result = Command({prefix() / "sbin/tvp-register", "--pegasus"})
                                   .with("PATH", "/usr/sbin:/usr/bin:/sbin:/bin")
                                   .with("PEGASUS_HOME", root() / "home")
                                   .with("PEGASUS_ROOT", root() / "source")
                                   .with("TVP_REGISTER_RECORDS", root() / "records")
                                   .run();
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_THAT(
      read("changes"), testing::StartsWith(
                           "cimmof -w -aE -n root/kvs/tvp/smi_15 -I " + schema.string() + " " +
                           schema.string() + "/qualifiers.mof\ncimmof -uc"));
}

TEST_F(RegisterCommandTest, SfcbIsRegisteredOnceAndUnregisteredCompletely) {
  fakeSfcb();
  buildSfcb();
  const auto stagedBefore = sfcbFiles("stage");
  const std::string share = prefix() / "share/tarvexpro/";
  const std::string stage = " -s " + sfcb("stage");
  // What version 1.0.0 staged before its rebuild failed.
  fs::create_directories(sfcb("stage/mofs/root/PG_InterOp"));
  write("var/lib/sfcb/stage/mofs/root/PG_InterOp/TVPIndication.mof", "class TVP_CIMIndication {};\n");
  EXPECT_EQ(
      changesOf({"--sfcb"}), "sfcbunstage" + stage + " -n root/PG_InterOp TVPIndication.mof\n" + "sfcbstage" +
                                 stage + " -n root/kvs/tvp/smi_15 -r " + share + "sfcb/TVP.reg " + share +
                                 "TVP.mof\n" + "sfcbstage" + stage + " -n root/interop " + share +
                                 "TVPIndication.mof\n" + "sfcbrepos -f" + stage + " -r " +
                                 sfcb("registration") + "\n");
  EXPECT_FALSE(fs::exists(sfcb("stage/mofs/root/PG_InterOp")));
  expectLinks(true);
  EXPECT_EQ(changesOf({"--sfcb"}), "");
  // Without a configuration file, and with the directory of one.
  fs::remove(root() / "sfcb.cfg");
  EXPECT_EQ(changesOf({"--sfcb"}), "");
  fs::create_directory(root() / "sfcb.cfg");
  write("sfcb.cfg/sfcb.cfg", "registrationDir: " + sfcb("elsewhere") + "\n");
  EXPECT_THAT(changesOf({"--sfcb"}), HasSubstr(" -r " + sfcb("elsewhere")));
  changesOf({"--sfcb", "--remove"});
  EXPECT_EQ(sfcbFiles("stage"), stagedBefore);
  expectLinks(false);
  EXPECT_EQ(changesOf({"--sfcb", "--remove"}), "");
}

TEST_F(RegisterCommandTest, SfcbIsAsBeforeWhenARebuildFailsAndKeepsItsSubscriptionsWhenOneSucceeds) {
  fakeSfcb();
  buildSfcb();
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"--sfcb"}, {"--sfcb", "--remove"}}) {
    const auto before = sfcbFiles("");
    const bool registered = fs::exists(root() / "records/sfcb");
    write("fault", "rebuild");
    const CommandResult failed = run(arguments);
    EXPECT_EQ(failed.exitStatus, 1);
    EXPECT_THAT(failed.err, HasSubstr("SFCB's repository was not rebuilt. It is again as it was before"));
    EXPECT_EQ(sfcbFiles(""), before);
    EXPECT_EQ(fs::exists(root() / "records/sfcb"), registered);
    expectLinks(registered);
    write("fault", "instances");
    changesOf(arguments);
    EXPECT_EQ(
        read("var/lib/sfcb/registration/repository/root/interop/cim_indicationsubscription"), "one two");
    fs::remove_all(sfcb("registration/repository.previous"));
    fs::remove(sfcb("registration/providerRegister.previous"));
  }
  // Somebody else's rebuild has failed and left the old repository under its other name.
  write("fault", "rebuild");
  Command({root() / "bin/sfcbrepos", "-f", "-s", sfcb("stage"), "-r", sfcb("registration")}).run();
  write("fault", "");
  changesOf({"--sfcb"});
  EXPECT_EQ(read("var/lib/sfcb/registration/repository/root/interop/cim_indicationsubscription"), "one two");
}

TEST_F(RegisterCommandTest, DryRunPrintsTheStepsAndChangesNothing) {
  struct Case {
    std::vector<std::string> arguments;
    std::vector<std::string> steps;
  };
  const std::vector<Case> cases{
      {{"--pegasus", "--dry-run"},
       {"The standard CIM schema is missing: /usr/share/mof/cim-current/", "smi_15 " + prefix().string(),
        "ln -sfn ", "TVPRegistration.mof\n"}},
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
      {{"--pegasus"}, 1, "Debian 12 has no package of an object manager; tvp-register --help says where"},
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
      {{"--pegasus", "--cim-schema", root() / "old"},
       1,
       "is too old: it lacks the qualifier PUnit. CIM 2.17"},
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
  fs::copy(root() / "cim", root() / "old", fs::copy_options::recursive);
  write("old/qualifiers.mof", "");
  check(withPegasus);
  write("fault", "compiler");
  check({{m_pegasus, 1, "failed with status 3"}});
  write("fault", "");
  write("providers/libVOLTVK.so", "another's");
  check({{m_pegasus, 1, "libVOLTVK.so exists and was not created by tvp-register. Move it away"}});
  write("fault", "stopped");
  check(
      {{{"--pegasus"}, 1, "or cimserver) and run 'tvp-register --pegasus' again."},
       {{"--pegasus", "--remove"}, 1, "run 'tvp-register --pegasus --remove' again."}});
  EXPECT_EQ(read("modules"), "");
}

}  // namespace
