#!/usr/bin/perl
# Lists the small ways in which a source can be broken, one a line, fields separated by tabs: file, first line, number of lines,
# kind, function, the lines as they are, the lines broken (byte 1F between lines).
#
# usage: breaks.pl FILE...
use strict;
use warnings;

my $conversion = qr/%[-+ #0]*\d*(?:\.\d+)?l?[a-zA-Z%]/;

my %log_level = qw(ERROR WARN WARN INFO INFO DEBUG DEBUG INFO VERBO DEBUG DUMP DEBUG);
my %comparison = ('==' => ['!='], '!=' => ['=='], '<' => ['<=', '>='], '<=' => ['<', '>'], '>' => ['>=', '<='], '>=' => ['>', '<']);
my %operator = ('&&' => '||', '||' => '&&', '+' => '-', '-' => '+', '*' => '/', '/' => '*', '%' => '*', '<<' => '>>', '>>' => '<<',
    '&' => '|', '|' => '&', '++' => '--', '--' => '++', '+=' => '-=', '-=' => '+=', '*=' => '+=');
my %name = qw(
    VISCA_SUCCESS VISCA_FAILURE  VISCA_FAILURE VISCA_SUCCESS  VISCA_NULL_POINTER VISCA_FAILURE  true false  false true
    VISCA_CMD_QUEUE_ID VISCA_CMD_RESULT_QUEUE_ID  VISCA_CMD_RESULT_QUEUE_ID VISCA_INQUIRY_RESULT_QUEUE_ID
    VISCA_INQUIRY_RESULT_QUEUE_ID VISCA_CMD_RESULT_QUEUE_ID  VISCA_FLUSH_BOTH 0
    WAIT_READABLE WAIT_TIMEOUT  WAIT_TIMEOUT WAIT_FAILED  WAIT_FAILED WAIT_TIMEOUT  WAIT_INTERRUPTED WAIT_FAILED
    PASS_HANDLED PASS_STOOD_ASIDE  PASS_STOOD_ASIDE PASS_READ_FAILED  PASS_READ_FAILED PASS_HANDLED
    COLLECT_REPLY COLLECT_REJECT  COLLECT_REJECT COLLECT_STOOD_ASIDE  COLLECT_STOOD_ASIDE COLLECT_REJECT
    SEND_WRITTEN SEND_NOTHING  SEND_NOTHING SEND_NO_ELEMENT  SEND_NO_ELEMENT SEND_NOTHING
    PROBE_FOUND PROBE_SILENT  PROBE_SILENT PROBE_BROKEN  PROBE_BROKEN PROBE_SILENT
    Inquire InquireKova  InquireKova Inquire  ViscaInitPkt ViscaInitPkt4Kova  ViscaInitPkt4Kova ViscaInitPkt
    IsSony IsKovaModule  IsKovaModule IsSony  IsSonyFamily IsSonyBlock  IsSonyBlock IsSonyFamily  IsKnownSonyBlock IsSonyBlock
    IsKova IsKovaGen2  IsKovaGen2 IsKova
    MODULE_SONY_1 MODULE_SONY_3  MODULE_SONY_3 MODULE_SONY_4  MODULE_SONY_4 MODULE_SONY_5  MODULE_SONY_5 MODULE_SONY_1);
my $namePattern = join '|', sort { length $b <=> length $a } keys %name;

my ($file, @lines, $function);

sub squeeze { my $text = join ' ', @_; $text =~ s/\s+/ /g; $text =~ s/^ | $//g; return $text; }

sub offer {
    my ($first, $kind, $old, $new) = @_;    # lists of lines
    return if "@$old" eq "@$new";
    print join("\t", $file, $first + 1, scalar @$old, $kind, $function, join("\x1F", @$old), join("\x1F", @$new)), "\n";
}

# The pieces of a line: [kind, text] with kind code, number, string, char or comment.
sub pieces {
    my ($line) = @_;
    my @pieces;
    while ($line =~ m{\G(?:(?<comment>//.*)|(?<string>"(?:\\.|[^"\\])*")|(?<char>'(?:\\.|[^'\\])')
                      |(?<number>\b(?:0[xX][0-9A-Fa-f]+|\d+)[uUlL]*\b)|(?<code>[A-Za-z_]\w*|<<=|>>=|->|<<|>>|<=|>=|==|!=|&&|\|\||\+\+|--|[-+*/%&|]=|\s+|.))}gxs) {
        my ($kind) = keys %+;
        push @pieces, [$kind, $+{$kind}];
    }
    return @pieces;
}

sub broken_number {
    my ($text) = @_;
    my ($digits, $suffix) = $text =~ /^(0[xX][0-9A-Fa-f]+|\d+)([uUlL]*)$/;
    if ($digits =~ /^0[xX](.+)/) {
        my $value = hex $1;
        my $width = length $1;
        return sprintf('0x%0*X%s', $width, $value & 1 ? $value - 1 : $value + 1, $suffix);
    }
    return ($digits + ($digits > 0 && $digits % 2 ? -1 : 1)) . $suffix;
}

# One letter of a text, not of a conversion.
sub broken_text {
    my ($text) = @_;
    my $at = 1;
    while ($at < length($text) - 1) {
        pos($text) = $at;
        if ($text =~ /\G(?:$conversion|\\x[0-9A-Fa-f]+|\\.)/gc) { $at = pos $text; next; }
        my $letter = substr $text, $at, 1;
        if ($letter =~ /[A-Za-z0-9]/) {
            my $other = $letter =~ /[zZ9]/ ? 'A' : chr(ord($letter) + 1);
            return substr($text, 0, $at) . $other . substr($text, $at + 1);
        }
        ++$at;
    }
    return;
}

sub break_pieces {
    my ($i) = @_;
    my @pieces = pieces($lines[$i]);
    my $code = join '', map { $_->[0] eq 'comment' ? '' : $_->[1] } @pieces;
    for my $k (0 .. $#pieces) {
        my ($kind, $text) = @{$pieces[$k]};
        my @broken;
        my $before = join '', map { $_->[1] } @pieces[0 .. $k - 1];
        my $after = join '', map { $_->[0] eq 'comment' ? '' : $_->[1] } @pieces[$k + 1 .. $#pieces];
        if ($kind eq 'number') {
            push @broken, ['number', broken_number($text)];
        } elsif ($kind eq 'string') {
            my $other = broken_text($text);
            push @broken, ['text', $other] if defined $other;
        } elsif ($kind eq 'char' && $text =~ /^'([A-Za-z0-9:_ -])'$/) {
            push @broken, ['number', "'" . chr(ord($1) + 1) . "'"];
        } elsif ($kind eq 'code') {
            my $binary = $before =~ /[\w\])]\s*$/ && $before !~ /\breturn\s*$/;
            my $spaced = $before =~ /\s$/ && $after =~ /^(?:\s|$)/;
            if ($text =~ /^LOG_(ERROR|WARN|INFO|DEBUG|VERBO|DUMP)(_AS|_AT)?$/ && $code !~ /^\s*#/) {
                push @broken, ['level', "LOG_$log_level{$1}" . ($2 // '')] unless ($2 // '') eq '_AT';
                push @broken, ['level', 'LOG_VERBO'] if $1 eq 'DUMP';
            } elsif ($text =~ /^(?:$namePattern)$/ && $code !~ /^\s*\w+,?\s*$/ && $before !~ /::$|\benum\b|^(?:bool|constexpr|uint32_t)\s*\w*\s*$/) {
                push @broken, ['name', $name{$text}];
            } elsif ($comparison{$text} && $spaced && $binary && $before !~ /_cast$|template\s*$/) {
                my @others = @{$comparison{$text}};
                # Where "x < y ? x : y" and "x <= y ? x : y" differ, x and y are the same.
                shift @others if $code =~ /([\w.]+) [<>]=? ([\w.]+) \? (?:\1 : \2|\2 : \1)\b/;
                push @broken, ['comparison', $_] for @others;
            } elsif ($operator{$text} && ($spaced && $binary || $text =~ /^(?:\+\+|--)$/)) {
                push @broken, ['operator', $operator{$text}];
            }
        }
        for my $new (@broken) {
            my $tail = join '', map { $_->[1] } @pieces[$k + 1 .. $#pieces];
            offer($i, $new->[0], [$lines[$i]], ["$before$new->[1]$tail"]);
        }
    }
    if ($code =~ /^(\s*(?:\} else )?(?:if|while) \()(.*)(\) \{\s*)$/ && $2 !~ /[=<>]/) {
        offer($i, 'negation', [$lines[$i]], ["$1!($2)$3"]);
    }
    if ($code =~ /^(.*\? )(.+?)( : )(.+?)([;,]\s*)$/ && $2 !~ /[?:]/ && $4 !~ /[?:]/) {
        offer($i, 'branches', [$lines[$i]], ["$1$4$3$2$5"]);
    }
}

sub bare { my ($line) = @_; return join '', map { $_->[0] eq 'comment' ? '' : $_->[1] } pieces($line); }

# The number of lines of the statement that begins here, 0 for none that could be left out.
sub statement {
    my ($i) = @_;
    return 0 if $i == 0;
    my $before = $i;
    do { --$before } while ($before > 0 && bare($lines[$before]) =~ /^\s*$/);
    return 0 if bare($lines[$before]) !~ /(?:[{};:]|^#.*)\s*$/;
    my $count = 1;
    my $text = bare($lines[$i]);
    while ($text !~ /;\s*$/ && $text !~ /[{}]\s*$/ && $count < 8 && $i + $count < @lines) {
        $text .= ' ' . squeeze(bare($lines[$i + $count]));
        ++$count;
    }
    $text = squeeze($text);
    return 0 if $text =~ /^(?:return .|static_assert|using|if|for|while|do|switch|case|default|enum|struct|else|\}|#|break;.|goto|typedef)/;
    return $count if $text =~ /^(?:break|continue|return);$/;
    return $count if $text =~ /^(?:\(void\)\s*)?[A-Za-z_][\w:.]*(?:->\w+)*\s*\(.*\);$/ && $text !~ /^\w+ \w+\(/;
    return $count if $text =~ /^\*?[A-Za-z_]\w*(?:(?:->|\.)\w+|\[[^\]]*\])*\s*(?:[-+*\/|&]|<<|>>)?=\s.*;$/;
    return $count if $text =~ /^(?:\+\+|--)[^;]*;$/;
    return 0;
}

sub break_statement {
    my ($i) = @_;
    my $count = statement($i) or return;
    my @old = @lines[$i .. $i + $count - 1];
    if ($old[0] =~ /^\s*(?:break|continue|return)\b/) {    # the line in front tells which one it is
        offer($i - 1, 'dropped', [@lines[$i - 1, $i]], [$lines[$i - 1], '']);
        return;
    }
    offer($i, 'dropped', \@old, [map { '' } @old]);
    my $next = $i + $count;
    return if $next >= @lines;
    my $more = statement($next) or return;
    my @second = @lines[$next .. $next + $more - 1];
    # Of two statements that are no calls, either can come first.
    return if grep { !/^\s*(?:\(void\))?[\w.>-]+\(/ || /^\s*(?:WordSet|memcpy|memset|strcpy)\(/ } $old[0], $second[0];
    return if $second[0] =~ /^\s*(?:break|continue|return)\b/ || ($old[0] =~ /^(\s*)/)[0] ne ($second[0] =~ /^(\s*)/)[0];
    offer($i, 'order', [@old, @second], [@second, @old]);
}

for my $path (@ARGV) {
    $file = $path;
    open my $in, '<', $path or die "$path: $!\n";
    chomp(@lines = <$in>);
    close $in;
    $function = '-';
    my $skipped = 0;    # until the end of a declaration that only the compiler sees
    for my $i (0 .. $#lines) {
        my $line = $lines[$i];
        my $code = bare($line);
        $function = $1 if $line =~ /^(?!namespace|struct|enum|using|static_assert)[\w].*?([\w:]+)\(/;
        $function = '-' if $line =~ /^\};?$|^(?:inline )?(?:static )?constexpr [^(]*=/;
        if ($code =~ /^#\s*define LOG_PREFIX|^\s+LOG_LINE_AT\(LOG_KIND|^#define LOG_\w+\(.*LOG_LINE/ || $code =~ /^\s*static_assert/) {
            $skipped = 1 if $code =~ /static_assert/ && $code !~ /;\s*$/;
            next;
        }
        if ($skipped) { $skipped = 0 if $code =~ /;\s*$/; next; }
        # The compiler calls the one, to prove the tables; only compilers without __FILE_NAME__ need the other.
        next if $function eq 'HasUniqueValues' || $function eq 'LogBaseName';
        next if $code =~ /^\s*(?:#|$)|\\$|^\s*template|__attribute__/;
        break_pieces($i);
        break_statement($i);
    }
}
