// The two files of the launch agent, byte for byte. Their sizes are fixed, so an edit that changes
// one is an error here.
#ifndef VELNOR_INSTALL_LAUNCH_AGENT_FILES_H
#define VELNOR_INSTALL_LAUNCH_AGENT_FILES_H

namespace velnor {

/// loader.pl: becomes the client that client.ini names, or else the newest one.
inline constexpr char kLoaderScript[] = R"file(#!/usr/bin/perl
use strict;

# Iterates across the potential client binaries in /Applications/Velnor, finds
# the one with the latest modification time and exec()s it, so that this
# process becomes the client's process and launchd watches the right one.
# Since the client deletes all binaries other than itself at startup, more
# than one candidate is unlikely. A binary that client.ini names goes first,
# whatever its name and age: it is the one that the maker wants to be used.
# Without any candidate the script ends and launchd starts it again in a
# moment.

my $BASE = "/Applications/Velnor";
my $EXE_PREFIX1 = "ksmac_";
my $EXE_PREFIX2 = "corvane_mac_";
my $latest_mod_time = -1;  # older than any possible modification time
my $bin_to_exec = '';

opendir(my $dir, $BASE) or exit;
foreach my $entry (readdir($dir)) {
    next unless $entry =~ /^(\Q$EXE_PREFIX1\E|\Q$EXE_PREFIX2\E)/;
    next unless -f "$BASE/$entry" && -x _;
    my $mod_time = (stat(_))[9];
    if ($mod_time > $latest_mod_time) {
        $latest_mod_time = $mod_time;
        $bin_to_exec = $entry;
    }
}
closedir($dir);

if (-f "$BASE/client.ini" && open(my $ini, '<', "$BASE/client.ini")) {
    while (my $line = <$ini>) {
        next unless $line =~ /MacOSClientURL\s*=\s*(.*?)\s*$/;
        my $name = $1;
        $name =~ s/.*\///;
        $bin_to_exec = $name if -f "$BASE/$name" && -x _;
    }
    close($ini);
}

if ($bin_to_exec ne '') {
    chdir($BASE);
    my @client = ("$BASE/$bin_to_exec");
    exec { $client[0] } @client;  # no shell, whatever the name
}
)file";
static_assert(sizeof kLoaderScript - 1 == 1554);

/// com.velnor.client.plist. Its label has the ".plist" ending because the probe asks launchctl for
/// it by that. No line break at the end.
inline constexpr char kAgentPropertyList[] = R"file(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
    <dict>
        <key>Label</key>
        <string>com.velnor.client.plist</string>
        <key>Nice</key>
        <integer>-18</integer>
        <key>OnDemand</key>
        <false/>
        <key>ProgramArguments</key>
        <array>
            <string>/Applications/Velnor/loader.pl</string>
        </array>
        <key>RunAtLoad</key>
        <true/>
    </dict>
</plist>)file";
static_assert(sizeof kAgentPropertyList - 1 == 543);

}  // namespace velnor

#endif
