<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: a timesheet as mailed to the customer.

  Receives the customer's CustomerRet with the customer's TimeTrackingRet elements appended
  and a PrintDate (the day the timesheet is made, as text) last. Shows each entry (date,
  who worked, service item, time, notes) in date order and the total time. Durations are
  qbXML time intervals, PT2H30M or PT2H30M0S; time is shown as hours:minutes.

  Given an employee, vendor or other name with its time entries instead of a customer, the
  same sheet names the customer of each entry where it would name the person.
-->
<xsl:stylesheet version="1.0"
    xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:exsl="http://exslt.org/common"
    exclude-result-prefixes="exsl">

  <xsl:import href="document-parts.xslt"/>

  <!-- Mail labels the HTML as plain text/html, which is US-ASCII: every other character
       goes out as a character reference. -->
  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <!-- A whole document: its first composed timesheet, or else its first customer. -->
  <xsl:template match="/">
    <xsl:variable name="composed" select="//*[self::CustomerRet or self::EmployeeRet or self::VendorRet or self::OtherNameRet][TimeTrackingRet]"/>
    <xsl:choose>
      <xsl:when test="$composed"><xsl:apply-templates select="$composed[1]"/></xsl:when>
      <xsl:otherwise><xsl:apply-templates select="(//CustomerRet)[1]"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template match="CustomerRet | EmployeeRet | VendorRet | OtherNameRet">
    <xsl:variable name="by-customer" select="boolean(self::CustomerRet)"/>
    <xsl:variable name="seconds-tree">
      <xsl:for-each select="TimeTrackingRet">
        <entry>
          <xsl:call-template name="duration-seconds">
            <xsl:with-param name="text" select="Duration"/>
          </xsl:call-template>
        </entry>
      </xsl:for-each>
    </xsl:variable>
    <xsl:variable name="total-seconds" select="sum(exsl:node-set($seconds-tree)/entry)"/>
    <xsl:variable name="name">
      <xsl:choose>
        <xsl:when test="normalize-space(FullName) != ''"><xsl:value-of select="FullName"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="Name"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>

    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
      <xsl:call-template name="title-block">
        <xsl:with-param name="title">TIMESHEET</xsl:with-param>
        <xsl:with-param name="fields">
          <field label="Date" value="{PrintDate[last()]}" kind="date"/>
          <xsl:if test="not($by-customer)">
            <field label="Name" value="{$name}"/>
          </xsl:if>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:if test="$by-customer">
        <xsl:call-template name="parties-block">
          <xsl:with-param name="first-label">To</xsl:with-param>
          <xsl:with-param name="first" select="BillAddress"/>
          <xsl:with-param name="first-name" select="$name"/>
        </xsl:call-template>
      </xsl:if>
      <tr>
        <td style="padding:0;">
          <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
            <tr bgcolor="{$accent}">
              <td width="100" style="{$head-cell-style}">Date</td>
              <td width="140" style="{$head-cell-style}">
                <xsl:choose>
                  <xsl:when test="$by-customer">Worked By</xsl:when>
                  <xsl:otherwise>Customer</xsl:otherwise>
                </xsl:choose>
              </td>
              <td width="130" style="{$head-cell-style}">Service</td>
              <td style="{$head-cell-style}">Notes</td>
              <td width="60" style="{$head-cell-style}text-align:right;">Hours</td>
            </tr>
            <xsl:for-each select="TimeTrackingRet">
              <xsl:sort select="TxnDate"/>
              <tr>
                <td style="{$cell-style}white-space:nowrap;">
                  <xsl:call-template name="date"><xsl:with-param name="value" select="TxnDate"/></xsl:call-template>
                </td>
                <td style="{$cell-style}">
                  <xsl:choose>
                    <xsl:when test="$by-customer"><xsl:value-of select="EntityRef/FullName"/></xsl:when>
                    <xsl:otherwise><xsl:value-of select="CustomerRef/FullName"/></xsl:otherwise>
                  </xsl:choose>
                </td>
                <td style="{$cell-style}"><xsl:value-of select="ItemServiceRef/FullName"/></td>
                <td style="{$cell-style}">
                  <xsl:call-template name="lines"><xsl:with-param name="text" select="Notes"/></xsl:call-template>
                </td>
                <td style="{$cell-style}{$num-style}">
                  <xsl:variable name="seconds">
                    <xsl:call-template name="duration-seconds">
                      <xsl:with-param name="text" select="Duration"/>
                    </xsl:call-template>
                  </xsl:variable>
                  <xsl:call-template name="hours-minutes">
                    <xsl:with-param name="seconds" select="number($seconds)"/>
                  </xsl:call-template>
                </td>
              </tr>
            </xsl:for-each>
          </table>
        </td>
      </tr>
      <tr>
        <td style="padding:12px 0 0 0;">
          <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
            <tr>
              <td style="padding:0;"/>
              <td width="270" style="padding:0;">
                <table width="100%" cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
                  <tr bgcolor="{$shade}">
                    <td style="padding:7px 8px;background-color:{$shade};font-weight:bold;border-top:2px solid {$accent};">Total Time</td>
                    <td style="padding:7px 8px;background-color:{$shade};font-weight:bold;font-size:15px;border-top:2px solid {$accent};{$num-style}">
                      <xsl:call-template name="hours-minutes">
                        <xsl:with-param name="seconds" select="$total-seconds"/>
                      </xsl:call-template>
                    </td>
                  </tr>
                </table>
              </td>
            </tr>
          </table>
        </td>
      </tr>
    </table>
  </xsl:template>

  <!-- The seconds in a qbXML time interval: [-]P[nD]T[nH][nM][nS]; 0 for anything else. -->
  <xsl:template name="duration-seconds">
    <xsl:param name="text"/>
    <xsl:variable name="t" select="translate(normalize-space($text), 'ptdhms', 'PTDHMS')"/>
    <xsl:variable name="sign">
      <xsl:choose>
        <xsl:when test="starts-with($t, '-')">-1</xsl:when>
        <xsl:otherwise>1</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="body" select="substring-after($t, 'P')"/>
    <xsl:variable name="days">
      <xsl:choose>
        <xsl:when test="contains(substring-before(concat($body, 'T'), 'T'), 'D')"><xsl:value-of select="substring-before($body, 'D')"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="time" select="substring-after($body, 'T')"/>
    <xsl:variable name="hours">
      <xsl:choose>
        <xsl:when test="contains($time, 'H')"><xsl:value-of select="substring-before($time, 'H')"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="after-hours">
      <xsl:choose>
        <xsl:when test="contains($time, 'H')"><xsl:value-of select="substring-after($time, 'H')"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="$time"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="minutes">
      <xsl:choose>
        <xsl:when test="contains($after-hours, 'M')"><xsl:value-of select="substring-before($after-hours, 'M')"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="after-minutes">
      <xsl:choose>
        <xsl:when test="contains($after-hours, 'M')"><xsl:value-of select="substring-after($after-hours, 'M')"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="$after-hours"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="secs">
      <xsl:choose>
        <xsl:when test="contains($after-minutes, 'S')"><xsl:value-of select="substring-before($after-minutes, 'S')"/></xsl:when>
        <xsl:otherwise>0</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="value" select="$sign * ($days * 86400 + $hours * 3600 + $minutes * 60 + $secs)"/>
    <xsl:choose>
      <xsl:when test="$body != '' and $value = $value"><xsl:value-of select="$value"/></xsl:when>
      <xsl:otherwise>0</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- Seconds as hours:minutes, rounded to the minute: 8100 is 2:15. -->
  <xsl:template name="hours-minutes">
    <xsl:param name="seconds"/>
    <xsl:variable name="minutes" select="round($seconds div 60)"/>
    <xsl:variable name="abs" select="($minutes &gt;= 0) * $minutes - ($minutes &lt; 0) * $minutes"/>
    <xsl:if test="$minutes &lt; 0">-</xsl:if>
    <xsl:value-of select="floor($abs div 60)"/>
    <xsl:text>:</xsl:text>
    <xsl:value-of select="format-number($abs mod 60, '00')"/>
  </xsl:template>

</xsl:stylesheet>
