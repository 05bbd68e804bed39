#!/usr/bin/perl
# Breaks the library in one way after the other and lets the unit tests look at each. Several of these work on the same list.
#
# usage: try.pl TREE BUILD WORK BREAKS RESULTS
#
# TREE is a copy of the sources, BUILD its build, WORK a folder of this process. Takes the lines of BREAKS (see breaks.pl) that
# nobody has taken yet; the file BREAKS.next counts. Appends to RESULTS: number of the line, a tab, refused (by the compiler),
# survived, or the first case that failed.
use strict;
use warnings;
use Fcntl qw(:flock SEEK_SET);
use File::Path qw(make_path);
use POSIX ();

my ($tree, $build, $work, $breaks, $results) = @ARGV;
my @compile = qw(g++ -std=gnu++17 -O0 -w -pipe -fPIC -fno-exceptions -fno-rtti -fno-threadsafe-statics -pthread);
$ENV{RC_PARAMS} = 'seed=1 max_success=50';    # laws over random values: the same values every time

sub slurp { my ($path) = @_; open my $in, '<', $path or die "$path: $!\n"; local $/; return <$in>; }

sub run {    # true when it ends well; what it prints is of no interest
    my @command = @_;
    my $child = fork // die "fork: $!\n";
    if (!$child) {
        open STDERR, '>', '/dev/null';
        exec @command or POSIX::_exit(127);
    }
    waitpid $child, 0;
    return $? == 0;
}

chdir $tree or die "$tree: $!\n";
my @sources = split ' ', `find visca_* -name '*.cpp' | sort`;
my %text = map { $_ => slurp($_) } @sources, split ' ', `find visca_* -name '*.h'`;
my %object = map { $_ => "$build/CMakeFiles/viscacam_objects.dir/$_.o" } @sources;

sub includes {    # does a file include another, itself or through others?
    my ($path, $header, $seen) = @_;
    return 0 if $seen->{$path}++;
    for my $next ($text{$path} =~ /^#include "(visca_[^"]+)"/mg) {
        return 1 if $next eq $header || includes($next, $header, $seen);
    }
    return 0;
}

# Each set of wrapped functions has its library and its tests.
my %set;
for my $folder (glob "$build/wrapped/*") {
    my ($name) = $folder =~ m{([^/]+)$};
    my @tests = grep { -x && !-d } glob "$folder/tests/*";
    make_path("$work/$name");
    $set{$name} = {flags => [split ' ', slurp("$folder/flags")], tests => \@tests, library => "$work/$name/libviscacam_wrapped.so"};
}
my @tests = map { my $set = $_; map { [$set, $_] } @{$set{$set}{tests}} } sort keys %set;

# Tests whose name tells what they look at come first, then those that noticed most breaks of the file, random values last.
my (%noticed, %first);
sub order_of_tests {
    my ($file) = @_;
    my ($folder, $base) = $file =~ m{([^/]+)/([^/.]+)\.\w+$};
    my %rank;
    for my $test (map { $_->[1] } @tests) {
        my $rank = 10 * ($noticed{$file}{$test} // 0);
        $rank += 5 if $test =~ /unit_\Q$base\E_test$/;
        $rank += 3 if $test =~ /unit_\Q$folder\E/;
        $rank -= 1e6 if $test =~ /property/;
        $rank{$test} = $rank;
    }
    return sort { $rank{$b->[1]} <=> $rank{$a->[1]} || $a->[1] cmp $b->[1] } @tests;
}

sub judge {
    my ($file, $count, $first, $new) = @_;
    my @lines = split /\n/, $text{$file}, -1;
    my @broken = split /\x1F/, $new, -1;
    splice @lines, $first - 1, $count, @broken ? @broken : '';
    (my $folder = "$work/broken/$file") =~ s{/[^/]+$}{};
    make_path($folder);
    open my $out, '>', "$work/broken/$file" or die "$work/broken/$file: $!\n";
    print $out join "\n", @lines;
    close $out;

    my %here = %object;
    my @affected = $file =~ /\.cpp$/ ? $file : grep { includes($_, $file, {}) } @sources;
    my $refused = 0;
    for my $source (@affected) {
        my $from = $source eq $file ? "$work/broken/$source" : $source;
        (my $flat = $source) =~ tr{/}{_};
        $here{$source} = "$work/$flat.o";
        # The macro keeps the name of the file in what it logs.
        $refused = 1, last if !run(@compile, "-I$work/broken", "-I$tree", "-I$tree/include", '-c', $from, '-o', $here{$source});
    }
    unlink "$work/broken/$file";
    return 'refused' if $refused;

    my %linked;
    for my $entry (order_of_tests($file)) {
        my ($set, $test) = @$entry;
        if (!$linked{$set}++) {
            run('g++', '-shared', '-pthread', @{$set{$set}{flags}}, '-o', $set{$set}{library}, values %here, '-lc') or return 'refused';
        }
        local $ENV{LD_LIBRARY_PATH} = "$work/$set";
        my @first = reverse @{$first{$file} // []};
        my $pid = open(my $told, '-|', $test, @first) // die "$test: $!\n";
        my $case = <$told> // '';
        chomp $case;
        close $told;
        next if $? == 0;
        $noticed{$file}{$test} += 1;
        $case ||= 'does not start';
        $first{$file} = [(grep { $_ ne $case } @{$first{$file} // []}), $case];
        my ($name) = $test =~ m{([^/]+)$};
        return "$name $case";
    }
    return 'survived';
}

sub next_number {
    open my $counter, '+<', "$breaks.next" or die "$breaks.next: $!\n";
    flock $counter, LOCK_EX;
    my $number = <$counter> + 0;
    seek $counter, 0, SEEK_SET;
    printf $counter "%d\n", $number + 1;
    close $counter;
    return $number;
}

my @breaks = split /\n/, slurp($breaks);
while ((my $number = next_number()) < @breaks) {
    my ($file, $first, $count, $kind, $function, $old, $new) = split /\t/, $breaks[$number], -1;
    my $result = judge($file, $count, $first, $new);
    open my $out, '>>', $results or die "$results: $!\n";
    flock $out, LOCK_EX;
    print $out "$number\t$result\n";
    close $out;
}
