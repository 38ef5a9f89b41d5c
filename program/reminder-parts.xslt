<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the layout of the overdue reminders.

  Imported by reminder-friendly.xslt, reminder-firm.xslt and reminder-final.xslt, which set
  the words of their stage (the variables below); everything else is shared.

  Receives a Reminder element that the program builds:
    Stage (1, 2 or 3), StageName (friendly, firm, final), Today (YYYY-MM-DD),
    Opening       the settings' opening words for the stage (Reminders FriendlyText,
                  FirmText, FinalText); empty: the sheet's own ($opening)
    CompanyName
    Customer      Name, Email
    Invoice*      TxnID, RefNumber, TxnDate, DueDate, DaysOverdue, BalanceRemaining and
                  PayLink (the pay-now address, empty without Documents PayLink)
    Total, Currency
  and writes an HTML fragment; the program puts the company header above it.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="document-parts.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <!-- The words of a stage: set by the sheet that imports this one. -->
  <xsl:variable name="title">PAYMENT REMINDER</xsl:variable>
  <xsl:variable name="opening">Our records show the invoices below as past due.</xsl:variable>
  <xsl:variable name="closing">Thank you.</xsl:variable>

  <xsl:template match="/">
    <xsl:apply-templates select="(//Reminder)[1]"/>
  </xsl:template>

  <xsl:template match="Reminder">
    <table cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
      <tr><td style="padding:0 0 14px 0;{$title-style}"><xsl:value-of select="$title"/></td></tr>
      <tr>
        <td style="padding:0 0 12px 0;">
          <xsl:text>Dear </xsl:text>
          <xsl:choose>
            <xsl:when test="normalize-space(Customer/Greeting) != ''"><xsl:value-of select="Customer/Greeting"/></xsl:when>
            <xsl:otherwise><xsl:value-of select="Customer/Name"/></xsl:otherwise>
          </xsl:choose>
          <xsl:text>,</xsl:text>
        </td>
      </tr>
      <tr>
        <td style="padding:0 0 14px 0;">
          <xsl:choose>
            <xsl:when test="normalize-space(Opening) != ''">
              <xsl:call-template name="lines"><xsl:with-param name="text" select="Opening"/></xsl:call-template>
            </xsl:when>
            <xsl:otherwise><xsl:value-of select="$opening"/></xsl:otherwise>
          </xsl:choose>
        </td>
      </tr>
      <tr>
        <td>
          <table cellpadding="0" cellspacing="0" border="0" style="{$inner-style}">
            <tr>
              <td style="{$head-cell-style}">Invoice</td>
              <td style="{$head-cell-style}">Date</td>
              <td style="{$head-cell-style}">Due</td>
              <td style="{$head-cell-style}{$num-style}">Days overdue</td>
              <td style="{$head-cell-style}{$num-style}">Open balance</td>
              <xsl:if test="Invoice/PayLink[normalize-space(.) != '']">
                <td style="{$head-cell-style}"></td>
              </xsl:if>
            </tr>
            <xsl:for-each select="Invoice">
              <tr>
                <td style="{$cell-style}">
                  <xsl:value-of select="RefNumber"/>
                  <xsl:if test="normalize-space(Job) != ''">
                    <br/><span style="font-size:11px;color:#666666;"><xsl:value-of select="Job"/></span>
                  </xsl:if>
                </td>
                <td style="{$cell-style}">
                  <xsl:call-template name="date"><xsl:with-param name="value" select="TxnDate"/></xsl:call-template>
                </td>
                <td style="{$cell-style}">
                  <xsl:call-template name="date"><xsl:with-param name="value" select="DueDate"/></xsl:call-template>
                </td>
                <td style="{$cell-style}{$num-style}"><xsl:value-of select="DaysOverdue"/></td>
                <td style="{$cell-style}{$num-style}">
                  <xsl:call-template name="money"><xsl:with-param name="value" select="BalanceRemaining"/></xsl:call-template>
                </td>
                <xsl:if test="../Invoice/PayLink[normalize-space(.) != '']">
                  <td style="{$cell-style}">
                    <xsl:if test="normalize-space(PayLink) != ''">
                      <a href="{PayLink}" style="color:{$accent};font-weight:bold;">Pay now</a>
                    </xsl:if>
                  </td>
                </xsl:if>
              </tr>
            </xsl:for-each>
            <tr>
              <td colspan="4" style="{$cell-style}font-weight:bold;">Total due</td>
              <td style="{$cell-style}{$num-style}font-weight:bold;">
                <xsl:call-template name="money"><xsl:with-param name="value" select="Total"/></xsl:call-template>
                <xsl:if test="normalize-space(Currency) != ''">
                  <xsl:text> </xsl:text><xsl:value-of select="Currency"/>
                </xsl:if>
              </td>
              <xsl:if test="Invoice/PayLink[normalize-space(.) != '']">
                <td style="{$cell-style}"></td>
              </xsl:if>
            </tr>
          </table>
        </td>
      </tr>
      <tr><td style="padding:14px 0 0 0;"><xsl:value-of select="$closing"/></td></tr>
      <tr><td style="padding:12px 0 0 0;"><xsl:value-of select="CompanyName"/></td></tr>
    </table>
  </xsl:template>

</xsl:stylesheet>
