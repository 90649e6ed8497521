# Completes the words of sftpclient in bash: source this file, or install it as
# /usr/share/bash-completion/completions/sftpclient. It needs nothing but bash.

_sftpclient() {
    local operations="get put ls mv rm mkdir rmdir stat test push pull doctor"
    local options="--help --user --password-file --password-stdin --netrc --netrc-file --ca --clear-login --port --config --json"
    local run="--pin --client-cert --client-key --tls-min --known-hosts --fingerprint --proxy --retry --retry-delay --connect-time --stall-time --max-time --quiet"
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} operation=${COMP_WORDS[1]}
    COMPREPLY=()

    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$operations --help --version" -- "$word")
        return
    fi

    # bash takes "--ca=file" for three words.
    if [ "$word" = = ]; then
        word=
    elif [ "$before" = = ]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $before in
        --password-file | --netrc-file | --config | --client-cert | --client-key | --known-hosts)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --ca)
            mapfile -t COMPREPLY < <(compgen -f -W none -- "$word")
            return
            ;;
        --user)
            mapfile -t COMPREPLY < <(compgen -u -- "$word")
            return
            ;;
        --tls-min)
            mapfile -t COMPREPLY < <(compgen -W "1.2 1.3" -- "$word")
            return
            ;;
        --pin | --fingerprint | --proxy | --limit-rate | --port | --jobs | --exclude | --retry | --retry-delay | --connect-time | --stall-time | --max-time | --timeout)
            return
            ;;
    esac

    case $word in
        -*)
            case $operation in
                doctor) options="$options --known-hosts --fingerprint --write --timeout" ;;
                get) options="$options $run --trace --as-host --resume --limit-rate" ;;
                put) options="$options $run --trace --as-host --resume --limit-rate --no-verify" ;;
                push | pull) options="$options $run --resume --limit-rate --jobs --delete --force --exclude --checksum --keep-going --dry-run" ;;
                ls) options="$options $run --trace --as-host --long" ;;
                mkdir | rmdir | stat) options="$options $run --trace" ;;
                *) options="$options $run --trace --as-host" ;;
            esac
            mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
            ;;
        *)
            # Local files; what is on the server is not known here.
            case $operation in
                get | put | ls | push | pull) mapfile -t COMPREPLY < <(compgen -f -- "$word") ;;
            esac
            ;;
    esac
}

complete -o filenames -F _sftpclient sftpclient
