#!/usr/bin/perl
# Says what became of the breaks. Fails when the tests missed one that explained.txt does not explain.
#
# usage: report.pl BREAKS RESULTS EXPLAINED
use strict;
use warnings;

my ($breaks, $results, $explained) = @ARGV;

sub slurp_lines { my ($path) = @_; open my $in, '<', $path or die "$path: $!\n"; chomp(my @lines = <$in>); return @lines; }
sub squeeze { my ($text) = @_; $text =~ s/[\s\x1F]+/ /g; $text =~ s/^ | $//g; return $text; }

# A break is known by file, function, the text before and the text after.
my (%reason, %used, $place, $old, $new);
for (slurp_lines($explained)) {
    if (/^(visca_\S+), (\S+)$/) { ($place, $old, $new) = ("$1, $2", '', ''); }
    elsif (/^- (.*)$/) { ($old, $new) = ($1, ''); }
    elsif (/^\+ ?(.*)$/) { $new = $1; $reason{"$place\n- $old\n+ $new"} = ''; }
    elsif (/^\s+(\S.*)$/ && defined $place) { $reason{"$place\n- $old\n+ $new"} .= "$1 "; }
}

my @breaks = slurp_lines($breaks);
my (%count, %of_kind, @missed);
for (sort { $a->[0] <=> $b->[0] } map { [split /\t/, $_, 2] } slurp_lines($results)) {
    my ($number, $result) = @$_;
    my ($file, $first, undef, $kind, $function, $was, $is) = split /\t/, $breaks[$number], -1;
    my $key = "$file, $function\n- " . squeeze($was) . "\n+ " . squeeze($is);
    my $class = $result eq 'refused' ? 'refused' : $result ne 'survived' ? 'noticed' : defined $reason{$key} ? 'explained' : 'missed';
    $used{$key} = 1 if $class eq 'explained';
    if (defined $reason{$key} && $class eq 'noticed') { print "noticed by $result although explained:\n$key\n\n"; }
    ++$count{$class};
    ++$of_kind{$kind}{$class};
    push @missed, "$key\n  $kind, line $first\n" if $class eq 'missed';
}

print "Not noticed, not explained:\n\n", join("\n", @missed), "\n" if @missed;
printf "%-12s %8s %8s %10s %7s %8s\n", 'kind', 'tried', 'noticed', 'explained', 'missed', 'refused';
my $row = sub {
    my ($name, $n) = @_;
    my ($noticed, $known, $lost, $refused) = map { $n->{$_} // 0 } qw(noticed explained missed refused);
    printf "%-12s %8d %8d %10d %7d %8d\n", $name, $noticed + $known + $lost, $noticed, $known, $lost, $refused;
};
$row->($_, $of_kind{$_}) for sort keys %of_kind;
$row->('all', \%count);
exit(@missed ? 1 : 0);
